pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Flat button that is only a glyph; its name shows as a tooltip. Gives up focus after use. */
AbstractButton {
    id: root

    required property string iconText
    required property string name
    property int iconSize: 20
    property int hoverSize: iconSize
    property color iconColor: "white"
    /** Pressed since the pointer came: the user knows the button, and its name may be another one now. */
    property bool known: false
    readonly property bool tipWanted: hovered && !known

    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    implicitWidth: 24
    implicitHeight: 24
    text: root.name
    Accessible.name: root.name
    ToolTip.visible: root.tipWanted
    ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
    ToolTip.text: root.name
    onPressedChanged: root.known = true
    onHoveredChanged: {
        if (!root.hovered)
            root.known = false;
    }
    onReleased: root.focus = false
    onCanceled: root.focus = false

    contentItem: Icon {
        text: root.iconText
        color: root.enabled ? root.iconColor : Theme.disabledTextColor
        font.pixelSize: root.hovered ? root.hoverSize : root.iconSize
    }
    background: Rectangle {
        color: "transparent"
        border.color: root.palette.highlight
        border.width: root.visualFocus ? 1 : 0
    }
}
