pragma ComponentBehavior: Bound

import Vesk

/** Deletes a take, after a question unless the warning is off. */
IconMenuItem {
    id: root

    required property TakeDeletion deletion

    text: root.deletion.warningOff ? qsTr("Delete") : qsTr("Delete...")
    iconText: "\uEC2A"
    onTriggered: root.deletion.start()
}
