pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** A box of texts to choose from; gives up focus when the choice is made. */
ComboBox {
    id: root

    onActivated: root.focus = false

    // Closed without a choice.
    Connections {
        target: root.popup

        function onClosed() {
            root.focus = false;
        }
    }

    // Plain text: the style's text field would be read aloud as one more control, without a name.
    contentItem: Text {
        leftPadding: 4 - root.padding
        text: root.displayText
        font: root.font
        color: root.enabled ? root.palette.buttonText : Theme.disabledTextColor
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    delegate: MenuItem {
        required property int index

        width: ListView.view?.width ?? root.width
        text: root.textAt(index)
        font.weight: root.currentIndex === index ? Font.DemiBold : Font.Normal
        highlighted: root.highlightedIndex === index
        hoverEnabled: root.hoverEnabled
        Accessible.name: text
    }
}
