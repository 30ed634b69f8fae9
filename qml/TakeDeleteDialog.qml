pragma ComponentBehavior: Bound

import Vesk

/** Asks before a take is deleted. */
ConfirmDialog {
    id: root

    required property Take take

    question: qsTr("Are you sure you want to delete Take %1?").arg(root.take?.takeId ?? "")
    onConfirmed: root.take.deleteTake()
}
