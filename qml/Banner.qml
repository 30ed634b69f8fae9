pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The box of a message that lies over the picture while something long-running happens. */
Rectangle {
    implicitHeight: 28
    color: Theme.boxColor
    border.color: Theme.palette.highlight
    border.width: 2
}
