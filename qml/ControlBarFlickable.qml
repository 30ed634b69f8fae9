pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The left part of a view: holds its control bar, which scrolls up to half a view beyond its end. */
Flickable {
    id: root

    width: contentWidth
    height: parent?.height ?? 0
    contentWidth: contentItem.childrenRect.width
    contentHeight: contentItem.childrenRect.height + height / 2
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    flickDeceleration: Theme.flickDeceleration

    FocusFollower {
        parent: root
        flickable: root
    }
}
