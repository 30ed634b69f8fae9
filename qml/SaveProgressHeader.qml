pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Titles of the columns of the list of saves. The rules between them are dragged to widen a column. */
Rectangle {
    id: root

    required property SaveColumns columns

    height: 28
    // Above the rows, which pass below it.
    z: 2
    color: Theme.boxColor

    Row {
        SaveHeaderCell {
            text: qsTr("Save To")
            width: root.columns.dest
            least: root.columns.least
            onWidened: width => root.columns.dest = width
        }
        SaveHeaderCell {
            text: qsTr("Name")
            width: root.columns.name
            least: root.columns.least
            onWidened: width => root.columns.name = width
        }
        SaveHeaderCell {
            text: qsTr("Status")
            width: root.columns.status
            least: root.columns.least
            onWidened: width => root.columns.status = width
        }
        SaveHeaderCell {
            text: qsTr("Camera")
            width: root.columns.camera
            least: root.columns.least
            onWidened: width => root.columns.camera = width
        }
        SaveHeaderCell {
            text: qsTr("Source")
            width: root.columns.source
            least: root.columns.least
            onWidened: width => root.columns.source = width
        }
    }
}
