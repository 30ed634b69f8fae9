pragma ComponentBehavior: Bound

import QtQuick

/** Put beside a list or another thing that scrolls: what the keys go to in it is brought into sight. */
Item {
    id: root

    required property Flickable flickable

    function showFocused() {
        const focused = root.Window.activeFocusItem;
        let parent = focused;
        while (parent && parent !== root.flickable.contentItem)
            parent = parent.parent;
        if (!parent)
            return;
        const top = focused.mapToItem(root.flickable.contentItem, 0, 0).y;
        if (top < root.flickable.contentY)
            root.flickable.contentY = top;
        else if (top + focused.height > root.flickable.contentY + root.flickable.height)
            root.flickable.contentY = top + focused.height - root.flickable.height;
    }

    visible: false

    Connections {
        target: root.Window.window

        function onActiveFocusItemChanged() {
            root.showFocused();
        }
    }
}
