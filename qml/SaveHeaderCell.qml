pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Title of one column, which lights up under the pointer, and the rule behind it. */
Rectangle {
    id: root

    required property string text
    required property int least

    /** The user wants the column to have another width. */
    signal widened(int width)

    height: 28
    color: hover.hovered ? Theme.paneColor : "transparent"
    Accessible.role: Accessible.ColumnHeader
    Accessible.name: root.text

    HoverHandler {
        id: hover
    }
    Text {
        x: 8
        width: parent.width - 16
        height: parent.height
        text: root.text
        color: "white"
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    Rectangle {
        id: rule

        x: parent.width - width
        width: 1
        height: parent.height
        color: Theme.palette.window
    }
    MouseArea {
        property real grip: 0

        x: rule.x - 2
        z: 1
        width: 5
        height: parent.height
        preventStealing: true
        cursorShape: Qt.SplitHCursor
        onPressed: mouse => grip = root.width - mapToItem(root, mouse.x, 0).x
        onPositionChanged: mouse => {
            if (pressed)
                root.widened(Math.max(root.least, Math.round(mapToItem(root, mouse.x, 0).x + grip)));
        }
    }
}
