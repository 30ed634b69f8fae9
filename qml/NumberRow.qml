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

    /** The user typed a number; it lies in the range. */
    signal entered(real number)

    FlatTextField {
        id: field

        anchors.centerIn: parent
        width: root.widgetWidth
        height: 20
        horizontalAlignment: TextInput.AlignRight
        validator: RegularExpressionValidator {
            regularExpression: root.lowest < 0 ? /-?\d{0,10}/ : /\d{0,10}/
        }
        Accessible.name: root.label
        Keys.forwardTo: [edit]

        FieldEdit {
            id: edit

            field: field
            shown: String(root.value ?? 0)
            onEntered: number => {
                if (root.choosable)
                    root.entered(Math.max(root.lowest, Math.min(root.highest, number)));
            }
        }
    }
}
