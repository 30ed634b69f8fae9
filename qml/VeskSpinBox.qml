pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Editable spin box with centred text, all of it selected on focus. */
SpinBox {
    id: root

    readonly property TextInput input: contentItem as TextInput

    editable: true

    Binding {
        target: root.input
        property: "horizontalAlignment"
        value: TextInput.AlignHCenter
    }
    Connections {
        target: root.input

        function onActiveFocusChanged() {
            if (root.input.activeFocus)
                root.input.selectAll();
        }
    }
}
