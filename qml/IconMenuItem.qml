pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Menu item with a glyph of the icon font in front of its text. */
MenuItem {
    id: root

    required property string iconText
    readonly property color textColor: !enabled ? Theme.disabledTextColor
                                                : highlighted || down ? palette.highlightedText : palette.text

    readonly property bool underPointer: !enabled && hover.hovered && visible
        && root.contains(root.mapFromItem(hover.parent, hover.point.position))

    Accessible.name: text
    spacing: 12
    padding: 0

    contentItem: Row {
        spacing: root.spacing

        Icon {
            width: root.height
            height: parent.height
            text: root.iconText
            color: root.textColor
            font.pixelSize: 14
        }
        Text {
            height: parent.height
            text: root.text
            font: root.font
            color: root.textColor
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        implicitWidth: 200
        implicitHeight: 20
        color: root.enabled ? root.palette.highlight : Theme.boxColor
        visible: root.enabled ? root.down || root.highlighted : root.underPointer
    }
    onUnderPointerChanged: {
        if (root.underPointer)
            root.menu.currentIndex = -1;
    }

    // On the list, because a disabled item and everything in it are told of no pointer.
    HoverHandler {
        id: hover

        parent: root.menu?.contentItem ?? root
        enabled: !root.enabled
    }
}
