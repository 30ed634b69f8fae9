pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** How many frames of a film are shown in a second. */
UnitsComboBox {
    id: root

    required property SaveTarget target

    /** What lies beside the range is brought into it while it is typed. */
    function limit() {
        const number = Number(root.input.text);
        if (number > root.target.highestFrameRate)
            root.input.text = root.target.highestFrameRate;
        else if (root.input.text.trim() !== "" && number < root.target.lowestFrameRate)
            root.input.text = root.target.lowestFrameRate;
    }

    function enterTyped() {
        if (root.edited && root.input.text === "")
            root.target.frameRate = root.target.defaultFrameRate;
        else if (root.edited && root.input.acceptableInput)
            root.target.frameRate = Number(root.input.text);
        root.settle();
    }

    function settle() {
        root.edited = false;
        root.currentIndex = root.find(String(root.target.frameRate));
        root.input.text = root.target.frameRate;
    }

    Layout.preferredWidth: 110
    Layout.preferredHeight: 24
    editable: true
    units: qsTr("fps")
    model: ["1", "23.98", "24", "25", "29.97", "30", "50", "59.94", "60", "120", "240"]
    validator: DoubleValidator {
        bottom: root.target.lowestFrameRate
        top: root.target.highestFrameRate
        decimals: 3
        notation: DoubleValidator.StandardNotation
        locale: "C"
    }
    Accessible.name: qsTr("Frame Rate")
    onActivated: index => {
        root.target.frameRate = Number(root.textAt(index));
        root.settle();
        root.focus = false;
    }
    onAccepted: {
        root.enterTyped();
        root.focus = false;
    }
    Component.onCompleted: root.settle()

    Connections {
        target: root.input

        function onTextEdited() {
            root.limit();
        }
    }
    // Closed without a choice.
    Connections {
        target: root.popup

        function onClosed() {
            root.focus = false;
        }
    }
    Connections {
        target: root.target

        function onFrameRateChanged() {
            root.settle();
        }
    }
}
