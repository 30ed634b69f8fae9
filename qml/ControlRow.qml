pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** One row of a control bar's section: a label and, on the value column's background, one widget. */
Item {
    id: root

    default property alias widget: background.data
    property string label: ""
    property color labelColor: "white"
    property bool subRow: false
    property int rowHeight: Theme.rowHeight
    readonly property int widgetWidth: background.widgetWidth

    width: parent?.width ?? 0
    height: rowHeight

    Label {
        width: Theme.labelWidth
        height: parent.height
        leftPadding: root.subRow ? Theme.subLabelPadding : Theme.labelPadding
        text: root.label
        color: root.labelColor
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    ControlBarBackground {
        id: background

        x: root.width - width - 2
        height: parent.height
    }
}
