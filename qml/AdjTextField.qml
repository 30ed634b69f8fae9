pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/**
 * Number field over a value that it does not write itself: editingFinished hands over what was typed, and the
 * field goes back to showing the value.
 */
Item {
    id: root

    required property string name
    property real value: 0
    property int decimals: 2
    property alias validator: field.validator
    property alias acceptableInput: field.acceptableInput
    property alias text: field.text
    property alias horizontalAlignment: field.horizontalAlignment

    /** Acceptable input was entered. */
    signal editingFinished(real number)

    implicitWidth: field.implicitWidth
    implicitHeight: field.implicitHeight

    FlatTextField {
        id: field

        anchors.fill: parent
        color: !root.enabled ? Theme.disabledTextColor : acceptableInput ? "white" : "red"
        horizontalAlignment: TextInput.AlignHCenter
        Accessible.name: root.name
        Keys.forwardTo: [edit]
        onActiveFocusChanged: {
            if (activeFocus)
                selectAll();
        }

        FieldEdit {
            id: edit

            field: field
            shown: root.value.toFixed(root.decimals)
            onEntered: number => root.editingFinished(number)
        }
    }
}
