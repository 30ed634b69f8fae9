pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Titles of the columns of the listing of a drive, which sort it. */
Rectangle {
    id: root

    required property SsdLsSortProxyModel entries
    readonly property int mode: entries?.sortMode ?? SsdLsSortProxyModel.NoSort

    /** Sorts by a column; one click more turns the order around. */
    function sort(first, second) {
        root.entries.sortMode = root.mode === first ? second : first;
    }

    height: 28
    // Above the rows, which pass below it.
    z: 2
    color: Theme.palette.base

    SsdLsHeaderCell {
        anchors.left: parent.left
        anchors.right: date.left
        text: qsTr("Name")
        ascending: root.mode === SsdLsSortProxyModel.NameSortAscending
        descending: root.mode === SsdLsSortProxyModel.NameSortDescending
        onClicked: root.sort(SsdLsSortProxyModel.NameSortAscending, SsdLsSortProxyModel.NameSortDescending)
    }
    SsdLsHeaderCell {
        id: date

        anchors.right: size.left
        width: 140 + rule
        rule: 1
        text: qsTr("Date")
        ascending: root.mode === SsdLsSortProxyModel.DateSortAscending
        descending: root.mode === SsdLsSortProxyModel.DateSortDescending
        onClicked: root.sort(SsdLsSortProxyModel.DateSortDescending, SsdLsSortProxyModel.DateSortAscending)
    }
    SsdLsHeaderCell {
        id: size

        anchors.right: parent.right
        width: 100 + rule
        rule: 1
        text: qsTr("Size")
        ascending: root.mode === SsdLsSortProxyModel.SizeSortAscending
        descending: root.mode === SsdLsSortProxyModel.SizeSortDescending
        onClicked: root.sort(SsdLsSortProxyModel.SizeSortDescending, SsdLsSortProxyModel.SizeSortAscending)
    }
    Rectangle {
        y: parent.height - 1
        width: parent.width
        height: 1
        color: Theme.palette.window
    }
}
