pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/**
 * Put into a text field that forwards its keys to it, it lets the field show a number and take an edit of it.
 * The field follows the number but for the time in which the user has it; a text that he left as he found it,
 * that is not acceptable, or that is no number, is dropped. It never writes the number: that is what entered()
 * is for.
 */
Item {
    id: root

    required property TextField field
    /** The number as it is shown. */
    required property string shown
    /** Return takes the number that stands there, whether or not it was edited. */
    property bool returnTakes: false
    /** What the field showed when the user came to it. */
    property string before: ""
    property bool returned: false

    /** The user typed another number. */
    signal entered(real number)

    function showNumber() {
        root.field.text = Qt.binding(() => root.shown);
        root.before = root.field.text;
    }

    function selectUnlessTyping() {
        if (root.field.activeFocus && root.field.text === root.before)
            root.field.selectAll();
    }

    function leave() {
        root.showNumber();
        root.field.focus = false;
    }

    /** A text that is acceptable goes on to the field, which finishes the edit. */
    function refuse(event) {
        event.accepted = !root.field.acceptableInput;
        root.returned = !event.accepted;
        if (event.accepted)
            root.leave();
    }

    function finish() {
        const edited = root.field.text !== root.before || (root.returnTakes && root.returned);
        root.returned = false;
        const number = parseFloat(root.field.text);
        // Before the focus goes: losing it would finish the same edit once more.
        root.leave();
        if (edited && !isNaN(number))
            root.entered(number);
    }

    Keys.onReturnPressed: event => root.refuse(event)
    Keys.onEnterPressed: event => root.refuse(event)
    Keys.onEscapePressed: root.leave()
    Component.onCompleted: root.showNumber()

    Connections {
        target: root.field

        function onActiveFocusChanged() {
            if (root.field.activeFocus) {
                root.field.text = root.before = root.shown;
                root.field.selectAll();
                // Once more after the press that may have brought the focus and puts the cursor somewhere.
                Qt.callLater(root.selectUnlessTyping);
            } else if (!root.field.acceptableInput) {
                root.showNumber();
            }
        }

        function onEditingFinished() {
            root.finish();
        }
    }
}
