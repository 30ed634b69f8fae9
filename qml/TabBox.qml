pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The box of a source's tab: chosen by click or key, with a menu on the right button. */
Rectangle {
    id: root

    required property string name
    required property bool selected
    required property Menu menu

    /** The user wants to see the source. */
    signal chosen

    // Above its neighbours, whose borders lie on its own.
    z: selected ? 1 : 0
    color: Theme.boxColor
    border.color: root.selected ? Theme.palette.highlight : Theme.edgeColor
    border.width: 2
    activeFocusOnTab: true
    Accessible.role: Accessible.PageTab
    Accessible.name: root.name
    Accessible.selectable: true
    Accessible.selected: root.selected
    Accessible.onPressAction: root.chosen()
    Keys.onSpacePressed: root.chosen()
    Keys.onReturnPressed: root.chosen()
    Keys.onMenuPressed: root.menu.popup(root, 0, root.height)

    Rectangle {
        anchors.fill: parent
        anchors.margins: 4
        color: "transparent"
        border.color: Theme.palette.highlight
        visible: root.activeFocus
    }
    TapHandler {
        onTapped: root.chosen()
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: root.menu.popup()
    }
}
