pragma ComponentBehavior: Bound

import Vesk

/** Opens the listing of a camera's drive. */
IconMenuItem {
    id: root

    required property Camera camera
    required property SsdTakeOpenLoader dialog

    text: qsTr("Open SSD Take...")
    iconText: "\uECC5"
    enabled: root.camera?.ssdState.value === Camera.SsdReady
    onTriggered: root.dialog.list()
}
