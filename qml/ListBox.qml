import QtQuick
import Vesk

/** The dark box that a list lies in. */
Rectangle {
    radius: 2
    color: Theme.palette.base
    border.color: Qt.darker(Theme.palette.window, 1.4)
}
