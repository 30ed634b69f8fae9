pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What can be done with a save: show what it made, end it, take it from the list. */
Item {
    id: root

    required property SaveJob job
    readonly property int jobState: job?.state ?? SaveJob.Queued
    readonly property bool saving: jobState === SaveJob.Saving

    function close() {
        switch (root.jobState) {
        case SaveJob.Saving:
            root.job.cancel();
            break;
        case SaveJob.QueuedFW:
            break;
        default:
            App.instance.saveManager.removeSaveJob(root.job);
        }
    }

    // Each in a place of its own, so that the one stays where it is when the other comes.
    IconButton {
        x: 10
        width: 18
        height: parent.height
        iconText: "\uF012"
        iconSize: 18
        hoverSize: 22
        name: qsTr("Open")
        visible: root.jobState === SaveJob.Done && root.job.fileName !== ""
        onClicked: root.job.open()
    }
    IconButton {
        x: 36
        width: 18
        height: parent.height
        iconText: "\uEB98"
        iconSize: 18
        hoverSize: 22
        name: root.saving ? qsTr("Cancel") : qsTr("Remove")
        visible: !root.saving || root.job.dest !== SaveJob.SsdDest
        onClicked: root.close()
    }
}
