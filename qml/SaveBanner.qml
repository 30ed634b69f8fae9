pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Shown over the picture while frames of the camera are being saved: the picture stands still meanwhile. */
Banner {
    id: root

    /** Null for a moment when the save has ended. */
    required property SaveJob job
    readonly property real progress: job?.progress ?? 0

    implicitWidth: 192

    // The whole width but the border and a pixel: the longest percentage just has room beside the words.
    BannerText {
        anchors.left: parent.left
        anchors.leftMargin: 3
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("SAVE IN PROGRESS...")
    }
    BannerText {
        anchors.right: parent.right
        anchors.rightMargin: 3
        anchors.verticalCenter: parent.verticalCenter
        text: root.progress.toFixed(0) + "%"
        font.features: { "tnum": 1 }
    }
}
