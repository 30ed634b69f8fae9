pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A row that only tells a value; the value is cut, with a tooltip, where it does not fit. */
ControlRow {
    id: root

    property alias text: value.text
    property alias valueColor: value.color
    property alias valueFont: value.font

    ElidedLabel {
        id: value

        anchors.centerIn: parent
        width: root.widgetWidth
        height: Theme.rowHeight
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.role: Accessible.StaticText
        Accessible.name: root.label
        Accessible.description: text
    }
}
