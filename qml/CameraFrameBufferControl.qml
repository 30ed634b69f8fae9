pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The camera's frame memory: what records now, and how it is divided. */
ControlGrid {
    id: root

    required property Camera camera
    required property int acqState
    required property bool stbyOrRec

    function takeText() {
        if (root.acqState === 1)
            return "STBY";
        if (root.acqState === 2 || root.acqState === 3)
            return (root.camera.activeTakeId.value ?? 0) + " / " + (root.camera.prtnCnt.value ?? 0);
        return "";
    }

    /** A count of frames; empty without an active take. */
    function frameText(count) {
        return root.camera.activeTake ? Number(count ?? 0).toFixed(0) : "";
    }

    ControlValueRow {
        label: qsTr("Take")
        text: root.takeText()
    }
    ControlValueRow {
        label: qsTr("Recorded Frames")
        text: root.frameText(root.camera.activeTake?.frCnt.value)
    }
    ControlValueRow {
        label: qsTr("Partition Size")
        text: root.frameText(root.camera.activeTake?.prtnFrCnt.value)
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: qsTr("Partition")
            enabled: root.camera.savedTakes.count === 0 && root.stbyOrRec
            onClicked: partitionDialog.open()
        }
    }
    DialogLoader {
        id: partitionDialog

        sourceComponent: PartitionDialog {
            camera: root.camera
        }
    }
}
