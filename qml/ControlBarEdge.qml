pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Closes a control bar's value column at its top or, with topEdge off, at its bottom. */
Item {
    id: root

    property bool topEdge: true

    implicitWidth: Theme.valueWidth - 2
    implicitHeight: 5
    clip: true

    Rectangle {
        y: root.topEdge ? 0 : -2
        width: parent.width
        height: parent.height + 2
        color: Theme.boxColor
        border.color: Theme.edgeColor
        border.width: 2
    }
}
