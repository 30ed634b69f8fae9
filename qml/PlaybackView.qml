pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/**
 * The main area of a source with recorded frames: its control bar, which is what stands inside of this type, at
 * the left, its picture in the rest, and the controls of playback under the picture.
 */
FocusScope {
    id: root

    required property PlaybackVeskObject source
    default property alias controlBar: flickable.flickableData

    // The source may vanish before the view of it does.
    enabled: source !== null
    Keys.forwardTo: [frameView, playbackControl]

    ControlBarFlickable {
        id: flickable
    }
    ImgFrameView {
        id: frameView

        anchors.left: flickable.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: playbackControl.top
        focus: true
        source: root.source
    }
    PlaybackControl {
        id: playbackControl

        anchors.left: flickable.right
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        source: root.source
    }
}
