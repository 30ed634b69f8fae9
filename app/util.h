#pragma once

#include <QObject>
#include <QtQmlIntegration>

/** Enumerations that belong to no single class, for the objects and for the views. */
namespace Util
{
Q_NAMESPACE
QML_ELEMENT

/** Colour channels of an adjustment; green stands for the only channel of a monochrome source. */
enum Color { R = 1, G = 2, B = 4 };
Q_DECLARE_FLAGS(Colors, Color)
Q_FLAG_NS(Colors)

Q_DECLARE_OPERATORS_FOR_FLAGS(Colors)

/** Every channel at once. */
inline constexpr Colors AllColors = Colors(R) | G | B;
} // namespace Util
