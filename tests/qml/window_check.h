#pragma once

#include <QStringList>

class QQuickWindow;

/** Looks over all that a window shows. */
namespace WindowCheck
{
/** Controls that a program which reads the window aloud could not name. */
QStringList namelessControls(QQuickWindow *window);
/** Controls and texts that are not wholly in the window, and texts that are cut. */
QStringList cutPieces(QQuickWindow *window);
/** Controls and texts that lie on others. */
QStringList overlappingPieces(QQuickWindow *window);
} // namespace WindowCheck
