import QtQuick
import QtQuick.Controls

/** Scroll bar beside a zoomed picture. */
ScrollBar {
    id: root

    required property bool shown
    /** The part of the picture that is out of sight, 0 to 1. */
    required property real maxPan
    /** Where the visible part begins, 0 to maxPan. */
    required property real pan

    /** The user moved the bar. */
    signal panned(real pan)

    policy: ScrollBar.AsNeeded
    active: shown || pressed || hovered
    size: 1 - maxPan
    position: pan
    focusPolicy: Qt.NoFocus
    onPositionChanged: {
        if (root.pressed)
            root.panned(root.position);
    }
}
