pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Slider of whole steps. The pointer leaves no focus behind; keys can move it step by step. */
Slider {
    id: root

    snapMode: Slider.SnapAlways
    focusPolicy: Qt.TabFocus

    PointHandler {
        onActiveChanged: {
            if (!active)
                root.focus = false;
        }
    }
}
