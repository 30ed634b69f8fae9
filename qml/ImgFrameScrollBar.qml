pragma ComponentBehavior: Bound

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

    function step(part) {
        root.panned(root.pan + part);
    }

    policy: ScrollBar.AsNeeded
    active: shown || pressed || hovered || activeFocus
    size: 1 - maxPan
    position: pan
    focusPolicy: maxPan > 0 ? Qt.TabFocus : Qt.NoFocus
    Accessible.onIncreaseAction: root.step(0.1)
    Accessible.onDecreaseAction: root.step(-0.1)
    Keys.onPressed: event => {
        const vertical = root.orientation === Qt.Vertical;
        if (event.key === (vertical ? Qt.Key_Down : Qt.Key_Right))
            root.step(0.1);
        else if (event.key === (vertical ? Qt.Key_Up : Qt.Key_Left))
            root.step(-0.1);
        else
            return;
        event.accepted = true;
    }
    onPositionChanged: {
        if (root.pressed)
            root.panned(root.position);
    }
}
