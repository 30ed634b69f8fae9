pragma ComponentBehavior: Bound

import Vesk

IconMenuItem {
    id: root

    required property SsdTake ssdTake

    text: qsTr("Close")
    iconText: "\uF4C7"
    onTriggered: root.ssdTake.fclose()
}
