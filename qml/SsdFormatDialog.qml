pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** Asks for a name and empties the camera's drive. */
DialogWindow {
    id: root

    required property Camera camera
    /** The drive may be emptied. */
    required property bool formatOK

    function accept() {
        if (!nameField.acceptableInput || !root.formatOK)
            return;
        root.camera.ssdFormat(nameField.text);
        root.close();
    }

    title: qsTr("SSD Format")
    modality: Qt.ApplicationModal
    fixedWidth: 320
    fixedHeight: 160
    Component.onCompleted: nameField.text = root.camera.ssdName.value ?? ""

    DialogForm {
        camera: root.camera

        DialogLabel {
            text: qsTr("SSD Name:")
        }
        TextField {
            id: nameField

            Layout.fillWidth: true
            Layout.preferredHeight: Theme.dialogRowHeight
            topPadding: 0
            bottomPadding: 0
            focus: true
            maximumLength: 11
            validator: RegularExpressionValidator {
                regularExpression: /^[^\x00-\x1F*?:/\\|<>"]*$/
            }
            Accessible.name: qsTr("SSD Name")
            onAccepted: root.accept()
        }
        Label {
            Layout.fillWidth: true
            Layout.columnSpan: 2
            text: qsTr("Warning: All data on the SSD will be erased!")
            Accessible.role: Accessible.StaticText
        }
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("Format")
            enabled: root.formatOK && nameField.acceptableInput
            onClicked: root.accept()
        }
        DialogButton {
            text: qsTr("Cancel")
            onClicked: root.close()
        }
    }
}
