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

/** What a save writes. The values are kept in the settings. */
enum Format : int { FormatVesk = 0, FormatAvi = 1, FormatMp4 = 2, FormatTiff = 3 };
Q_ENUM_NS(Format)

/** How a save codes its frames. The values are kept in the settings. */
enum Codec : int {
    CodecVesk = 0,
    CodecRaw_BGR24 = 1,
    CodecRaw_RGB24 = 2,
    CodecRaw_Gray8 = 3,
    CodecAV1_YUV420P = 4,
    CodecAV1_YUV420P10 = 5,
    CodecH264 = 6
};
Q_ENUM_NS(Codec)
} // namespace Util
