pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Icon button that is lit while its transform is on. */
PressButton {
    id: root

    property bool active: false

    height: parent?.height ?? 0
    iconSize: 20
    hoverSize: 24
    iconColor: active ? palette.highlight : "white"
    Accessible.checkable: true
    Accessible.checked: active
    Accessible.onToggleAction: root.chosen()
}
