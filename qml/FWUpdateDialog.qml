pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Dialogs
import QtQuick.Layouts
import Vesk

/** Sends a firmware file to a camera and tells how the update gets on. Closing it does not end the update. */
DialogWindow {
    id: root

    required property Camera camera
    property string path: ""
    property bool started: false

    function start() {
        root.started = true;
        root.camera.fwUpdate(App.instance.fileUrlFromPath(root.path).toString());
    }

    title: qsTr("Firmware Update")
    modality: Qt.ApplicationModal
    fixedWidth: 480
    fixedHeight: 160

    DialogForm {
        camera: root.camera

        DialogLabel {
            text: qsTr("Q4FW File:")
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.preferredHeight: Theme.dialogRowHeight

            ElidedLabel {
                Layout.fillWidth: true
                Layout.fillHeight: true
                verticalAlignment: Text.AlignVCenter
                text: root.path
                elide: Text.ElideMiddle
                Accessible.role: Accessible.StaticText
                Accessible.name: qsTr("Q4FW File")
                Accessible.description: text
            }
            IconButton {
                Layout.preferredHeight: Theme.dialogRowHeight
                iconText: "\uECC5"
                iconSize: 16
                name: qsTr("Open Q4FW File")
                onClicked: fileDialog.open()
            }
        }
        DialogLabel {
            text: qsTr("Status:")
        }
        ElidedLabel {
            Layout.fillWidth: true
            Layout.preferredHeight: Theme.dialogRowHeight
            verticalAlignment: Text.AlignVCenter
            text: root.camera.fwUpdateStatus
            Accessible.role: Accessible.StaticText
            Accessible.name: qsTr("Status")
            Accessible.description: text
        }
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("Start Update")
            enabled: root.path !== "" && root.camera.fwUpdateProgress === 0 && !root.started
            onClicked: root.start()
        }
        DialogButton {
            text: qsTr("Close")
            onClicked: root.close()
        }
    }

    FileDialog {
        id: fileDialog

        title: qsTr("Open Q4FW File")
        fileMode: FileDialog.OpenFile
        nameFilters: [qsTr("Q4FW files (*.q4fw)")]
        onAccepted: root.path = App.instance.filePathFromUrl(selectedFile.toString())
    }
}
