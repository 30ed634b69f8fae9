pragma ComponentBehavior: Bound

import Vesk

/** Tells that a take has to stay while the camera saves it. */
RefusalDialog {
    id: root

    required property Take take

    fixedWidth: 200
    fixedHeight: 100
    message: qsTr("Take %1 can't be deleted while save is in progress!").arg(root.take?.takeId ?? "")
}
