pragma ComponentBehavior: Bound

import Vesk

IconMenuItem {
    id: root

    required property Camera camera

    text: qsTr("Disconnect")
    iconText: "\uF51C"
    onTriggered: root.camera.disconnectCamera()
}
