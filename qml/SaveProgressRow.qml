pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One save. Its job is null for a moment when it has been removed. */
Rectangle {
    id: root

    required property SaveColumns columns
    required property SaveJob job
    readonly property bool fromTake: job?.sourceType === SaveJob.TakeSourceType
    readonly property bool fromCamera: fromTake || job?.sourceType === SaveJob.SsdTakeSourceType

    height: 48
    color: hover.hovered ? Theme.boxColor : "transparent"
    Accessible.role: Accessible.Row
    Accessible.name: destination.text

    HoverHandler {
        id: hover
    }
    Row {
        height: parent.height

        SaveCell {
            width: root.columns.dest
            name: qsTr("Save To")
            text: root.job?.dest === SaveJob.SsdDest ? qsTr("SSD") : qsTr("File")
        }
        SaveCell {
            id: destination

            width: root.columns.name
            name: qsTr("Name")
            iconText: "\uECC5"
            text: (root.job?.fileName ?? "") + "." + (root.job?.fileExt ?? "")
        }
        SaveStatus {
            width: root.columns.status
            height: parent.height
            job: root.job
        }
        SaveCell {
            width: root.columns.camera
            name: qsTr("Camera")
            iconText: root.fromCamera ? "\uF288" : ""
            text: root.fromCamera ? root.job.sourceCameraName : ""
        }
        SaveCell {
            width: root.columns.source
            name: qsTr("Source")
            iconText: root.fromTake ? "\uEB8F" : "\uECC5"
            text: root.fromTake ? qsTr("Take %1").arg(root.job.sourceTakeId)
                : App.instance.fileNameFromPath(root.job?.sourceFileName ?? "")
        }
        SaveActions {
            width: root.columns.action
            height: parent.height
            job: root.job
        }
    }
}
