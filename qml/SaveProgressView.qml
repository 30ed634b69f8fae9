pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The list of all saves, those that have ended among them, until the operator removes them. */
FocusScope {
    id: root

    /** Widths in pixels, the rule at the right end of a column included. */
    readonly property SaveColumns columns: SaveColumns {}

    ListBox {
        anchors.centerIn: parent
        width: parent.width - 25
        height: parent.height - 25

        ListView {
            id: list

            anchors.fill: parent
            anchors.margins: 1
            clip: true
            focus: true
            boundsBehavior: Flickable.StopAtBounds
            flickDeceleration: Theme.flickDeceleration
            flickableDirection: Flickable.AutoFlickIfNeeded
            contentWidth: Math.max(width, root.columns.sum)
            headerPositioning: ListView.OverlayHeader
            header: SaveProgressHeader {
                width: list.contentWidth
                columns: root.columns
            }
            model: App.instance.saveManager.saveJobs
            // All rows are kept: the keys go from one to the next in the order in which they were made.
            cacheBuffer: 48 * count
            // No row is the current one: the list would follow it wherever its neighbours go.
            currentIndex: -1
            keyNavigationEnabled: false
            Keys.onUpPressed: bar.decrease()
            Keys.onDownPressed: bar.increase()
            ScrollBar.vertical: ScrollBar {
                id: bar

                stepSize: 48 / list.contentHeight
            }
            Accessible.role: Accessible.Table
            Accessible.name: qsTr("Saves")

            delegate: SaveProgressRow {
                required property SaveJob qtObject

                width: list.contentWidth
                columns: root.columns
                job: qtObject
            }
        }
        FocusFollower {
            flickable: list
            covered: list.headerItem?.height ?? 0
        }
    }
}
