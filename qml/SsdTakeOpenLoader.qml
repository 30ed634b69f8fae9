pragma ComponentBehavior: Bound

import Vesk

/** Holds the listing of a camera's drive, while it is open. */
DialogLoader {
    id: root

    /** Null for a moment when the camera has gone. */
    required property Camera camera

    /** Opens the listing as the drive is now. */
    function list() {
        root.camera.ssdLs();
        root.open();
    }

    sourceComponent: SsdTakeOpenDialog {
        camera: root.camera
    }
    onCameraChanged: root.active = false
}
