pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The main area of a selected camera: its settings at the left, its live picture in the rest. */
FocusScope {
    id: root

    required property Camera camera

    Keys.forwardTo: [frameView]

    ControlBarFlickable {
        id: flickable

        CameraControlBar {
            camera: root.camera
        }
    }
    ImgFrameView {
        id: frameView

        anchors.left: flickable.right
        anchors.right: parent.right
        height: parent.height
        focus: true
        source: root.camera
    }
}
