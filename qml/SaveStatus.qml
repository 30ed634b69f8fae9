pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** How far a save has come, or how it ended. */
Item {
    id: root

    required property SaveJob job
    readonly property bool saving: job?.state === SaveJob.Saving
    readonly property real progress: job?.progress ?? 0
    readonly property string percent: progress.toFixed(0) + "%"

    function textOf(state) {
        switch (state) {
        case SaveJob.Queued:
        case SaveJob.QueuedFW:
            return qsTr("Queued");
        case SaveJob.Done:
            return qsTr("Complete");
        case SaveJob.Cancelled:
            return qsTr("Cancelled");
        case SaveJob.Error:
            return qsTr("Error: ") + root.job.error;
        default:
            return "";
        }
    }

    SaveCell {
        width: parent.width
        name: qsTr("Status")
        text: root.saving ? root.percent : root.textOf(root.job?.state)
        visible: !root.saving
    }
    ProgressBar {
        x: 8
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width - percentLabel.width - 22
        height: 8
        to: 100
        value: root.progress
        visible: root.saving
        Accessible.name: qsTr("Save progress")
    }
    Label {
        id: percentLabel

        anchors.right: parent.right
        anchors.rightMargin: 8
        width: 32
        height: parent.height
        text: root.percent
        color: "white"
        font.features: { "tnum": 1 }
        horizontalAlignment: Text.AlignRight
        verticalAlignment: Text.AlignVCenter
        visible: root.saving
    }
}
