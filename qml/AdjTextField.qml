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
    /** What the field showed when the user came to it; changes of the value leave it alone until he goes. */
    property string before: ""
    property alias validator: field.validator
    property alias acceptableInput: field.acceptableInput
    property alias text: field.text
    property alias horizontalAlignment: field.horizontalAlignment

    /** Acceptable input was entered. */
    signal editingFinished(real number)

    function showValue() {
        field.text = Qt.binding(() => root.value.toFixed(root.decimals));
        root.before = field.text;
    }

    function leave() {
        root.showValue();
        field.focus = false;
    }

    /** A text that is acceptable goes on to the field, which finishes the edit. */
    function refuse(event) {
        event.accepted = !field.acceptableInput;
        if (event.accepted)
            root.leave();
    }

    function finish() {
        const typed = field.text;
        const edited = typed !== root.before;
        const number = Number(typed);
        // Before the focus goes: losing it would finish the same edit once more.
        root.showValue();
        field.focus = false;
        if (edited && !isNaN(number))
            root.editingFinished(number);
    }

    implicitWidth: field.implicitWidth
    implicitHeight: field.implicitHeight

    FlatTextField {
        id: field

        anchors.fill: parent
        text: root.value.toFixed(root.decimals)
        color: !root.enabled ? Theme.disabledTextColor : acceptableInput ? "white" : "red"
        horizontalAlignment: TextInput.AlignHCenter
        Accessible.name: root.name
        onActiveFocusChanged: {
            if (activeFocus) {
                field.text = root.before = root.value.toFixed(root.decimals);
                selectAll();
            } else if (!acceptableInput) {
                root.showValue();
            }
        }
        onEditingFinished: root.finish()
        Keys.onReturnPressed: event => root.refuse(event)
        Keys.onEnterPressed: event => root.refuse(event)
        Keys.onEscapePressed: root.leave()
    }
}
