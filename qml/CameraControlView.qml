pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The main area of a selected camera: its settings at the left, its live picture in the rest. */
FocusScope {
    id: root

    required property Camera camera

    /** Brings the control that the keys go to into sight. */
    function showFocused() {
        const focused = root.Window.activeFocusItem;
        let parent = focused;
        while (parent && parent !== bar)
            parent = parent.parent;
        if (!parent)
            return;
        const top = focused.mapToItem(bar, 0, 0).y;
        if (top < flickable.contentY)
            flickable.contentY = top;
        else if (top + focused.height > flickable.contentY + flickable.height)
            flickable.contentY = top + focused.height - flickable.height;
    }

    Keys.forwardTo: [frameView]

    Connections {
        target: root.Window.window

        function onActiveFocusItemChanged() {
            root.showFocused();
        }
    }
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
