pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A whole number of the camera in a field that is limited to a range; the field shows what the camera has. */
ControlRow {
    id: root

    required property var value
    required property real lowest
    required property real highest

    /** The user typed a number; it lies in the range. */
    signal entered(real number)

    function finish() {
        const typed = Number(field.text);
        const edited = field.text !== "" && field.text !== "-" && field.text !== root.shownText();
        field.text = Qt.binding(root.shownText);
        field.focus = false;
        if (edited)
            root.entered(Math.max(root.lowest, Math.min(root.highest, typed)));
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
        onEditingFinished: root.finish()
        Keys.onEscapePressed: {
            field.text = Qt.binding(root.shownText);
            field.focus = false;
        }
    }
}
