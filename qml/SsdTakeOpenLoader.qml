pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Holds the listing of a camera's drive, while it is open. */
DialogLoader {
    id: root

    /** Null for a moment when the camera has gone. */
    required property Camera camera

    /** Opens the listing as the drive is now, or brings up the one that was opened elsewhere. */
    function list() {
        root.camera.ssdLs();
        const dialog = root.camera.ssdLsEntries.shownBy as Window;
        if (dialog?.visible) {
            dialog.raise();
            dialog.requestActivate();
        } else {
            root.open();
        }
    }

    sourceComponent: SsdTakeOpenDialog {
        camera: root.camera
    }
    onCameraChanged: root.active = false
}
