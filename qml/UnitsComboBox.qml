pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T

/** Combo box that shows a prefix and a unit around its value, in the field and in the list. */
ComboBox {
    id: root

    property string prefix: ""
    required property string units

    /** A row of the list as it is shown. */
    function decorated(value) {
        return root.units === "" ? root.prefix + value : root.prefix + value + " " + root.units;
    }

    delegate: MenuItem {
        required property int index

        width: ListView.view?.width ?? root.width
        text: root.decorated(root.textAt(index))
        font.weight: root.currentIndex === index ? Font.DemiBold : Font.Normal
        highlighted: root.highlightedIndex === index
        hoverEnabled: root.hoverEnabled
        Accessible.name: text
    }

    contentItem: T.TextField {
        id: field

        topPadding: 4
        bottomPadding: 4
        leftPadding: 4 - root.padding + prefixLabel.width
        rightPadding: 4 - root.padding + unitsLabel.width
        text: root.editable ? root.editText : root.displayText
        enabled: root.editable
        autoScroll: root.editable
        readOnly: root.down
        inputMethodHints: root.inputMethodHints
        validator: root.validator
        selectByMouse: root.selectTextByMouse
        color: root.editable ? root.palette.text : root.palette.buttonText
        selectionColor: root.palette.highlight
        selectedTextColor: root.palette.highlightedText
        verticalAlignment: Text.AlignVCenter
        Accessible.name: root.Accessible.name
        onActiveFocusChanged: {
            if (!activeFocus && root.editable)
                field.accepted();
        }

        background: Rectangle {
            radius: 2
            color: root.palette.base
            border.color: field.activeFocus ? root.palette.highlight : "transparent"
            visible: root.editable && !root.flat
        }

        Label {
            id: prefixLabel

            x: 4 - root.padding
            height: field.height
            text: root.prefix
            color: field.color
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
        Label {
            id: unitsLabel

            x: field.width - width
            height: field.height
            text: root.units
            color: field.color
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }
}
