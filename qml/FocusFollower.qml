pragma ComponentBehavior: Bound

import QtQuick

/** Put beside a list or another thing that scrolls: what the keys go to in it is brought into sight. */
Item {
    id: root

    required property Flickable flickable
    /** Height of what lies over the upper end of the flickable, in pixels. */
    property real covered: 0

    /** Where the content is to begin so that a stretch of it is in a sight of that length. */
    function brought(start: real, size: real, content: real, sight: real): real {
        return Math.min(start, Math.max(content, start + size - sight));
    }

    function showFocused() {
        const focused = root.Window.activeFocusItem;
        let parent = focused;
        while (parent && parent !== root.flickable.contentItem)
            parent = parent.parent;
        if (!parent)
            return;
        const view = root.flickable;
        const place = focused.mapToItem(view.contentItem, 0, 0);
        view.contentY = root.brought(place.y - root.covered, focused.height + root.covered, view.contentY, view.height);
        if (view.contentWidth > view.width)
            view.contentX = root.brought(place.x, focused.width, view.contentX, view.width);
    }

    visible: false

    Connections {
        target: root.Window.window

        function onActiveFocusItemChanged() {
            root.showFocused();
        }
    }
}
