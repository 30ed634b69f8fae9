pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** Renames a camera. */
DialogWindow {
    id: root

    required property Camera camera

    function accept() {
        if (!nameField.acceptableInput)
            return;
        root.camera.name.value = nameField.text;
        root.close();
    }

    title: qsTr("Camera - Edit Name")
    modality: Qt.ApplicationModal
    fixedWidth: 480
    fixedHeight: 96
    Component.onCompleted: nameField.text = root.camera.name.value ?? ""

    RowLayout {
        anchors.fill: parent
        anchors.margins: Theme.dialogMargin
        spacing: 14

        Label {
            Layout.preferredWidth: 96
            text: qsTr("Camera Name:")
            font.bold: true
        }
        TextField {
            id: nameField

            Layout.fillWidth: true
            focus: true
            validator: RegularExpressionValidator {
                regularExpression: /^(?! )[^\x00-\x1F\\/*?"|]*$/
            }
            Accessible.name: qsTr("Camera Name")
            onAccepted: root.accept()
        }
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("OK")
            enabled: nameField.acceptableInput
            onClicked: root.accept()
        }
        DialogButton {
            text: qsTr("Cancel")
            onClicked: root.close()
        }
    }
}
