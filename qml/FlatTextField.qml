pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Text field that looks like plain text until it is hovered or edited. */
TextField {
    id: root

    /** Behind the text while it is pointed at or edited. */
    property color litColor: palette.base

    padding: 2
    color: root.enabled ? "white" : Theme.disabledTextColor
    hoverEnabled: true

    background: Rectangle {
        implicitWidth: 60
        implicitHeight: 20
        color: root.hovered || root.activeFocus ? root.litColor : "transparent"
        border.color: root.activeFocus ? root.palette.highlight : "transparent"
    }
}
