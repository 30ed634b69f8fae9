pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The dialogs that add a source. */
Item {
    readonly property DialogLoader cameraConnect: cameraConnect
    readonly property FileDialogLoader veskFileOpen: veskFileOpen

    visible: false

    DialogLoader {
        id: cameraConnect

        sourceComponent: CameraConnectDialog {}
    }
    FileDialogLoader {
        id: veskFileOpen

        sourceComponent: VeskFileOpenDialog {}
    }
}
