pragma ComponentBehavior: Bound

import Vesk

IconMenuItem {
    id: root

    required property VeskFile veskFile

    text: qsTr("Close")
    iconText: "\uF4C7"
    onTriggered: root.veskFile.close()
}
