pragma ComponentBehavior: Bound

import Vesk

IconMenuItem {
    id: root

    required property SourceDialogs dialogs

    text: qsTr("Open VESK File...")
    iconText: "\uECC5"
    onTriggered: root.dialogs.veskFileOpen.open()
}
