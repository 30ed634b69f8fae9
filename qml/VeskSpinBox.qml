pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Editable spin box with centred text, all of it selected on focus. Gives up focus after use. */
SpinBox {
    id: root

    readonly property TextInput input: contentItem as TextInput

    function leave() {
        root.focus = false;
    }

    editable: true
    Keys.onEscapePressed: {
        // The text of the value again, before the box reads it as its focus goes; what was typed is dropped.
        root.input.text = root.textFromValue.call(root, root.value, root.locale);
        root.leave();
        root.input.text = Qt.binding(() => root.displayText);
    }
    Keys.onReturnPressed: root.leave()
    Keys.onEnterPressed: root.leave()

    Binding {
        target: root.input
        property: "horizontalAlignment"
        value: TextInput.AlignHCenter
    }
    Binding {
        target: root.input
        property: "color"
        value: root.enabled ? root.palette.text : Theme.disabledTextColor
    }
    Connections {
        target: root.input

        function onActiveFocusChanged() {
            if (root.input.activeFocus)
                root.input.selectAll();
        }
    }
    Connections {
        target: root.up

        function onPressedChanged() {
            if (!root.up.pressed)
                root.leave();
        }
    }
    Connections {
        target: root.down

        function onPressedChanged() {
            if (!root.down.pressed)
                root.leave();
        }
    }
}
