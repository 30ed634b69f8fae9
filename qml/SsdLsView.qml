pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The recordings on a camera's drive. One of them is selected, by the pointer or by the keys. */
ListView {
    id: root

    required property SsdLsSortProxyModel entries

    /** The user wants to open what is selected. */
    signal accepted

    /** Selects another row; the ends of the list are as far as it goes. */
    function go(row) {
        if (root.count === 0)
            return;
        root.currentIndex = Math.max(0, Math.min(row, root.count - 1));
        // A title that had the keys leaves them to the row, so that Return opens it.
        const title = root.Window.activeFocusItem as SsdLsHeaderCell;
        if (title)
            title.focus = false;
        const item = root.currentItem as SsdLsRow;
        item.entry?.select(false);
        // The titles lie over the rows, which the list by itself takes for rows in sight.
        const top = item.y - root.headerItem.height;
        const bottom = item.y + item.height - root.height;
        root.contentY = Math.max(bottom, Math.min(root.contentY, top));
    }

    readonly property int rowsInSight: Math.max(1, Math.floor((root.height - 28) / 20) - 1)

    clip: true
    reuseItems: true
    boundsBehavior: Flickable.StopAtBounds
    flickDeceleration: Theme.flickDeceleration
    highlightMoveDuration: 0
    keyNavigationEnabled: false
    currentIndex: -1
    model: root.entries
    activeFocusOnTab: true
    ScrollBar.vertical: ScrollBar {}
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Recordings")
    Keys.onUpPressed: root.go(root.currentIndex - 1)
    Keys.onDownPressed: root.go(root.currentIndex + 1)
    Keys.onPressed: event => {
        event.accepted = true;
        switch (event.key) {
        case Qt.Key_PageUp:
            root.go(root.currentIndex - root.rowsInSight);
            break;
        case Qt.Key_PageDown:
            root.go(root.currentIndex + root.rowsInSight);
            break;
        case Qt.Key_Home:
            root.go(0);
            break;
        case Qt.Key_End:
            root.go(root.count - 1);
            break;
        default:
            event.accepted = false;
        }
    }
    Keys.onReturnPressed: root.accepted()
    Keys.onEnterPressed: root.accepted()

    headerPositioning: ListView.OverlayHeader
    header: SsdLsHeader {
        width: root.width
        entries: root.entries
    }
    delegate: SsdLsRow {
        required property int index
        required property SsdLsEntry qtObject

        width: root.width
        entry: qtObject
        onPicked: root.go(index)
        onOpened: root.accepted()
    }

    // While no row tells where the keys go.
    Rectangle {
        parent: root
        anchors.fill: parent
        z: 3
        color: "transparent"
        border.color: Theme.palette.highlight
        visible: root.activeFocus && (root.entries?.selectedCount ?? 0) === 0
    }

    // In another order the keys begin anew: the row is another recording's. In a list that is made anew, too: no
    // row of it is selected.
    Connections {
        target: root.entries

        function onSelectedCountChanged() {
            if (root.entries.selectedCount === 0)
                root.currentIndex = -1;
        }
        function onSortModeChanged() {
            root.currentIndex = -1;
        }
    }
}
