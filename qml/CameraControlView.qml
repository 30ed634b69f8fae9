import QtQuick
import Vesk

/** The main area of a selected camera: its settings at the left, its live picture in the rest. */
FocusScope {
    id: root

    required property Camera camera

    Keys.forwardTo: [frameView]

    Flickable {
        id: flickable

        width: bar.width
        height: parent.height
        contentWidth: bar.width
        contentHeight: bar.height + height / 2
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        flickDeceleration: Theme.flickDeceleration

        CameraControlBar {
            id: bar

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
