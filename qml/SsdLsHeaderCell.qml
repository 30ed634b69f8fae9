pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Title of one column with the arrow of the order that it gives the list, and a rule before it. */
AbstractButton {
    id: root

    /** Width of the rule in pixels, 0 for none. */
    property int rule: 0
    required property bool ascending
    required property bool descending

    height: parent?.height ?? 0
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.role: Accessible.ColumnHeader
    Accessible.name: root.text
    Accessible.description: root.ascending ? qsTr("ascending") : root.descending ? qsTr("descending") : ""
    Accessible.onPressAction: root.clicked()
    // The list is not to hand the keys back to the title that had them last.
    onActiveFocusChanged: {
        if (!root.activeFocus)
            root.focus = false;
    }
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    background: Rectangle {
        color: root.hovered ? Theme.boxColor : "transparent"
        border.color: Theme.palette.highlight
        border.width: root.visualFocus ? 1 : 0

        Rectangle {
            width: root.rule
            height: parent.height
            color: Theme.palette.window
        }
    }
    contentItem: Item {
        Text {
            x: 8 + root.rule
            width: parent.width - x - arrow.width - 4
            height: parent.height
            text: root.text
            color: "white"
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
        }
        Icon {
            id: arrow

            x: parent.width - width - 4
            width: 20
            height: parent.height
            text: root.descending ? "\uEA4E" : "\uEA78"
            font.pixelSize: 16
            visible: root.ascending || root.descending
        }
    }
}
