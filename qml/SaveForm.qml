pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts

/** Rows of labels and values in a section of the dialog for saving: two pairs side by side, or one. */
Item {
    default property alias rows: grid.data

    implicitHeight: grid.implicitHeight + 20

    GridLayout {
        id: grid

        x: 10
        y: 10
        width: parent.width - 20
        columns: 4
        rowSpacing: 10
        columnSpacing: 14
    }
}
