pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What the camera saves to its drive by itself after each recording. */
ControlGrid {
    id: root

    required property Camera camera
    readonly property int mode: camera.ssdAutosaveMode.value ?? 0
    readonly property bool autosave: (mode & Camera.SsdAutosaveEnabled) !== 0
    readonly property bool selection: autosave && (mode & Camera.SsdAutosaveSelection) !== 0

    function setBit(bit, on) {
        root.camera.ssdAutosaveMode.value = on ? root.mode | bit : root.mode & ~bit;
    }

    ComboRow {
        label: qsTr("Mode")
        model: [qsTr("Disabled"), qsTr("Enabled")]
        currentIndex: root.autosave ? 1 : 0
        choosable: (root.camera.featureSsdSave.value ?? 0) >= 3
        onChosen: index => root.setBit(Camera.SsdAutosaveEnabled, index === 1)
    }
    ComboRow {
        label: qsTr("Save")
        model: [qsTr("All Frames"), qsTr("Selection")]
        currentIndex: root.mode & Camera.SsdAutosaveSelection ? 1 : 0
        visible: root.autosave
        onChosen: index => root.setBit(Camera.SsdAutosaveSelection, index === 1)
    }
    NumberRow {
        label: qsTr("Start Frame")
        subRow: true
        value: root.camera.ssdAutosaveStart.value
        lowest: -2147483648
        highest: 2147483647
        visible: choosable
        choosable: root.selection
        onEntered: number => root.camera.ssdAutosaveStart.value = number
    }
    NumberRow {
        label: qsTr("Frame Count")
        subRow: true
        value: root.camera.ssdAutosaveCnt.value
        lowest: 0
        highest: 4294967295
        visible: choosable
        choosable: root.selection
        onEntered: number => root.camera.ssdAutosaveCnt.value = number
    }
    ComboRow {
        label: qsTr("After Save")
        model: [qsTr("Keep Take"), qsTr("Delete Take")]
        currentIndex: root.mode & Camera.SsdAutosaveDeleteTake ? 1 : 0
        visible: root.autosave
        onChosen: index => root.setBit(Camera.SsdAutosaveDeleteTake, index === 1)
    }
    EditableValueRow {
        label: qsTr("File Name")
        text: root.camera.ssdAutosaveName.value ?? ""
        editName: qsTr("Edit file name")
        visible: root.autosave
        onEdit: nameDialog.open()
    }
    NumberRow {
        label: qsTr("File Name Seq")
        value: root.camera.ssdNameSeq.value
        lowest: 0
        highest: 4294967295
        visible: choosable
        choosable: root.autosave
        onEntered: number => root.camera.ssdNameSeq.value = number
    }
    DialogLoader {
        id: nameDialog

        sourceComponent: SsdAutosaveNameEditDialog {
            camera: root.camera
        }
    }
}
