pragma ComponentBehavior: Bound

import Vesk

/** Asks before all takes of a camera are deleted. */
ConfirmDialog {
    id: root

    required property Camera camera

    question: qsTr("Are you sure you want to delete all takes?")
    onConfirmed: root.camera.deleteAllTakes()
}
