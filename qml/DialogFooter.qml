pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** The row of buttons at the bottom of a dialog; buttons share its width. */
Item {
    id: root

    default property alias buttons: row.data

    implicitHeight: Theme.dialogFooterHeight

    RowLayout {
        id: row

        anchors.fill: parent
        anchors.leftMargin: Theme.dialogMargin
        anchors.rightMargin: Theme.dialogMargin
        anchors.bottomMargin: Theme.dialogMargin
        spacing: Theme.dialogMargin
        uniformCellSizes: true
    }
}
