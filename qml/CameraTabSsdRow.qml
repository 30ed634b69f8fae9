pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** How far a camera's save to its drive has come. */
Row {
    id: root

    /** 0 to 100. */
    required property int percent

    spacing: 6

    Label {
        text: qsTr("SSD:")
        color: "white"
    }
    ProgressBar {
        anchors.verticalCenter: parent.verticalCenter
        width: 88
        height: 8
        value: root.percent / 100
        Accessible.name: qsTr("SSD save progress")
    }
    Label {
        width: 28
        text: root.percent + "%"
        color: "white"
        horizontalAlignment: Text.AlignRight
    }
}
