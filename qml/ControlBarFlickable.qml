pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The left part of a view: holds its control bar, which scrolls up to half a view beyond its end. */
Flickable {
    id: root

    /** Brings the control that the keys go to into sight. */
    function showFocused() {
        const focused = root.Window.activeFocusItem;
        let parent = focused;
        while (parent && parent !== root.contentItem)
            parent = parent.parent;
        if (!parent)
            return;
        const top = focused.mapToItem(root.contentItem, 0, 0).y;
        if (top < root.contentY)
            root.contentY = top;
        else if (top + focused.height > root.contentY + root.height)
            root.contentY = top + focused.height - root.height;
    }

    width: contentWidth
    height: parent?.height ?? 0
    contentWidth: contentItem.childrenRect.width
    contentHeight: contentItem.childrenRect.height + height / 2
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    flickDeceleration: Theme.flickDeceleration

    Connections {
        target: root.Window.window

        function onActiveFocusItemChanged() {
            root.showFocused();
        }
    }
}
