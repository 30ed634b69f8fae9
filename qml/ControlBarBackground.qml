pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The background of one row of a control bar's value column. */
Rectangle {
    id: root

    property int valueWidth: Theme.valueWidth
    property color backgroundColor: Theme.boxColor
    /** Width for the widget in the row, which stands in its middle. */
    readonly property int widgetWidth: width - 10

    color: Theme.edgeColor
    implicitWidth: root.valueWidth - 2
    implicitHeight: Theme.rowHeight

    Rectangle {
        x: 2
        width: parent.width - 4
        height: parent.height
        color: root.backgroundColor
    }
}
