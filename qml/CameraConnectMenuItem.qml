pragma ComponentBehavior: Bound

import Vesk

IconMenuItem {
    id: root

    required property DialogLoader connectDialog

    text: qsTr("Connect Camera...")
    iconText: "\uF288"
    onTriggered: root.connectDialog.open()
}
