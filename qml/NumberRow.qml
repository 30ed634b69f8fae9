pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A whole number of the camera in a field that is limited to a range; the field shows what the camera has. */
ControlRow {
    id: root

    required property var value
    required property real lowest
    required property real highest
    /** Whether a number may be entered; an edit that it ends is dropped. */
    property bool choosable: true
    /** What the field showed when the user came to it; polls leave it alone until he goes. */
    property string before: ""

    /** The user typed a number; it lies in the range. */
    signal entered(real number)

    function finish() {
        const typed = Number(field.text);
        const edited = field.text !== "" && field.text !== "-" && field.text !== root.before;
        root.leave();
        if (edited && root.choosable)
            root.entered(Math.max(root.lowest, Math.min(root.highest, typed)));
    }

    function leave() {
        field.text = Qt.binding(root.shownText);
        root.before = field.text;
        field.focus = false;
    }

    function shownText() {
        return String(root.value ?? 0);
    }

    FlatTextField {
        id: field

        anchors.centerIn: parent
        width: root.widgetWidth
        height: 20
        text: root.shownText()
        horizontalAlignment: TextInput.AlignRight
        validator: RegularExpressionValidator {
            regularExpression: root.lowest < 0 ? /-?\d{0,10}/ : /\d{0,10}/
        }
        Accessible.name: root.label
        onActiveFocusChanged: {
            if (activeFocus)
                field.text = root.before = root.shownText();
        }
        onEditingFinished: root.finish()
        Keys.onEscapePressed: root.leave()
    }
}
