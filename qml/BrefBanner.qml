pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Shown over the picture while the camera takes its black reference. */
Rectangle {
    implicitWidth: message.width + 12
    implicitHeight: 28
    color: Theme.boxColor
    border.color: Theme.palette.highlight
    border.width: 2

    Text {
        id: message

        anchors.centerIn: parent
        text: qsTr("BLACK REF IN PROGRESS...")
        color: "white"
        font.pixelSize: 14
    }
}
