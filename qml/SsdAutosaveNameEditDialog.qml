pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** Edits the template that the camera names its recordings by; it needs a tag that makes names differ. */
DialogWindow {
    id: root

    required property Camera camera
    readonly property bool unique: ["<seq>", "<seq:", "<time>", "<time:"].some(tag => nameField.text.includes(tag))

    function accept() {
        if (!nameField.acceptableInput || !root.unique)
            return;
        root.camera.ssdAutosaveName.value = nameField.text;
        root.close();
    }

    function insert(tag) {
        nameField.insert(nameField.cursorPosition, tag);
        nameField.forceActiveFocus();
    }

    title: qsTr("SSD Auto Save - Edit File Name")
    modality: Qt.ApplicationModal
    fixedWidth: 480
    fixedHeight: 160
    Component.onCompleted: nameField.text = root.camera.ssdAutosaveName.value ?? ""

    DialogForm {
        camera: root.camera

        DialogLabel {
            text: qsTr("File Name:")
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.preferredHeight: Theme.dialogRowHeight

            TextField {
                id: nameField

                Layout.fillWidth: true
                Layout.fillHeight: true
                topPadding: 0
                bottomPadding: 0
                focus: true
                validator: RegularExpressionValidator {
                    regularExpression: /^(?! )[^\x00-\x1F\\/*?"|]*$/
                }
                Accessible.name: qsTr("File Name")
                onAccepted: root.accept()
            }
            IconButton {
                id: tagButton

                Layout.preferredHeight: Theme.dialogRowHeight
                iconText: "\uEA12"
                name: qsTr("Insert tag")
                onClicked: tagMenu.popup(tagButton, tagButton.width - tagMenu.width, tagButton.height)
            }
        }
        Label {
            Layout.fillWidth: true
            Layout.columnSpan: 2
            text: qsTr("Must contain a tag such as a sequence number or timestamp to ensure file names are unique")
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
        }
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("OK")
            enabled: root.unique && nameField.acceptableInput
            onClicked: root.accept()
        }
        DialogButton {
            text: qsTr("Cancel")
            onClicked: root.close()
        }
    }

    Menu {
        id: tagMenu

        width: 128

        MenuItem {
            text: qsTr("Sequence Number")
            Accessible.name: text
            onTriggered: root.insert("<seq>")
        }
        MenuItem {
            text: qsTr("Timestamp")
            Accessible.name: text
            onTriggered: root.insert("<time>")
        }
    }
}
