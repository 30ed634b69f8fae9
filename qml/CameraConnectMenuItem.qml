pragma ComponentBehavior: Bound

import Vesk

IconMenuItem {
    id: root

    required property SourceDialogs dialogs

    text: qsTr("Connect Camera...")
    iconText: "\uF288"
    onTriggered: root.dialogs.cameraConnect.open()
}
