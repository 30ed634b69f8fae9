pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** A bracket that puts a marker to the current frame, and is lit while the marker is not at its end. */
PressButton {
    id: root

    required property bool atEnd

    /** The marker is to go back to its end. */
    signal reset

    implicitWidth: 18
    iconSize: 18
    hoverSize: 22
    iconColor: atEnd ? "white" : palette.highlight
    focusPolicy: Qt.StrongFocus
    ToolTip.visible: tipWanted && !menu.visible
    Keys.onMenuPressed: menu.popup(root, 0, -menu.implicitHeight)

    contentItem: Text {
        text: root.iconText
        color: root.iconColor
        font.bold: true
        font.pixelSize: root.hovered ? root.hoverSize : root.iconSize
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: menu.popup(root, 0, -menu.implicitHeight)
    }
    Menu {
        id: menu

        width: 48

        MenuItem {
            text: qsTr("Reset")
            Accessible.name: text
            onTriggered: root.reset()
        }
    }
}
