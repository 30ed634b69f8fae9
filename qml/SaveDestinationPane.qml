pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Dialogs
import QtQuick.Layouts
import Vesk

/** Where the frames go. */
SaveForm {
    id: root

    required property SaveTarget target
    /** Bytes left on the camera's drive. */
    readonly property real driveSpace: Number(target.camera?.ssdSize.value ?? 0) - Number(target.camera?.ssdUsed.value ?? 0)

    function refreshFreeSpace() {
        freeSpace.bytes = App.instance.folderBytesAvailable(root.target.folder);
    }

    Component.onCompleted: root.refreshFreeSpace()

    Connections {
        target: root.target

        function onFolderChanged() {
            root.refreshFreeSpace();
        }
    }

    SaveLabel {
        text: qsTr("Save To:")
    }
    SaveChoice {
        Layout.columnSpan: 3
        name: qsTr("Save To")
        entries: root.target.dests
        chosen: root.target.destIndex
        onActivated: index => root.target.destIndex = index
    }
    SaveLabel {
        text: qsTr("File Name:")
    }
    SaveNameField {
        Layout.columnSpan: 3
        Layout.fillWidth: true
        target: root.target
    }
    SaveLabel {
        text: qsTr("Folder:")
        visible: !root.target.onDrive
    }
    RowLayout {
        visible: !root.target.onDrive
        Layout.columnSpan: 3
        Layout.preferredHeight: 24

        SaveValue {
            name: qsTr("Folder")
            text: root.target.folder
            elide: Text.ElideMiddle
        }
        IconButton {
            iconText: "\uED6A"
            iconSize: 18
            name: qsTr("Select Folder")
            onClicked: folderDialog.open()
        }
    }
    SaveLabel {
        text: qsTr("Free Space:")
    }
    SaveValue {
        id: freeSpace

        property real bytes: 0

        name: qsTr("Free Space")
        text: Qt.locale().formattedDataSize(root.target.onDrive ? root.driveSpace : bytes, 2, Locale.DataSizeSIFormat)
    }

    FolderDialog {
        id: folderDialog

        title: qsTr("Select Folder")
        currentFolder: App.instance.fileUrlFromPath(root.target.folder)
        onAccepted: root.target.folder = App.instance.filePathFromUrl(selectedFolder.toString())
    }
}
