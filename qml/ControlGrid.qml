pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The content of a control bar's section: rows of label and value, the value column closed at both ends. */
Column {
    id: root

    default property alias rows: body.data

    ControlBarEdge {
        x: root.width - width - 2
    }
    Column {
        id: body

        width: root.width
    }
    ControlBarEdge {
        x: root.width - width - 2
        topEdge: false
    }
}
