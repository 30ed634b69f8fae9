pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Offers to skip to the end of the range on its side, or to the next change of the picture. */
TransportButton {
    id: root

    required property string endText
    required property string diffText

    signal endChosen
    signal diffChosen

    ToolTip.visible: tipWanted && !menu.visible
    onChosen: {
        if (menu.visible)
            menu.close();
        else
            menu.popup(root, 0, -menu.implicitHeight);
    }

    Menu {
        id: menu

        width: 112
        // A press on the button is the button's own matter.
        closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutsideParent

        MenuItem {
            text: root.endText
            Accessible.name: text
            onTriggered: root.endChosen()
        }
        MenuItem {
            text: root.diffText
            Accessible.name: text
            onTriggered: root.diffChosen()
        }
    }
}
