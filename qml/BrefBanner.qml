pragma ComponentBehavior: Bound

import Vesk

/** Shown over the picture while the camera takes its black reference. */
Banner {
    implicitWidth: message.width + 12

    BannerText {
        id: message

        anchors.centerIn: parent
        text: qsTr("BLACK REF IN PROGRESS...")
    }
}
