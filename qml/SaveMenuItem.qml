pragma ComponentBehavior: Bound

import Vesk

/** Opens the dialog that saves frames of a source. */
IconMenuItem {
    id: root

    required property SaveDialogLoader dialog

    text: qsTr("Save...")
    iconText: "\uF0B3"
    onTriggered: root.dialog.open()
}
