pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One recording on a drive. Its entry is null for a moment when the list has been made anew. */
Rectangle {
    id: root

    required property SsdLsEntry entry
    readonly property bool selected: entry?.selected ?? false
    /** Firmware that lists names alone. */
    readonly property bool nameAlone: entry?.oldFW ?? true

    /** The user selects it. */
    signal picked
    /** The user opens it. */
    signal opened

    height: 20
    color: root.selected ? Theme.palette.highlight : hover.hovered ? Theme.boxColor : "transparent"
    Accessible.role: Accessible.ListItem
    Accessible.name: root.entry?.name ?? ""
    Accessible.description: [date.text, size.text].join(" ").trim()
    Accessible.selectable: true
    Accessible.selected: root.selected
    Accessible.onPressAction: root.picked()

    HoverHandler {
        id: hover
    }
    TapHandler {
        onTapped: root.picked()
        onDoubleTapped: root.opened()
    }
    Icon {
        id: icon

        x: 4
        width: 20
        height: parent.height
        text: "\uECC5"
        font.pixelSize: 14
    }
    ElidedLabel {
        anchors.left: icon.right
        anchors.right: date.left
        anchors.margins: 4
        anchors.topMargin: 0
        height: parent.height
        text: root.entry?.name ?? ""
        color: "white"
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    Text {
        id: date

        anchors.right: size.left
        width: 141
        height: parent.height
        leftPadding: 8
        text: root.nameAlone ? "" : root.entry?.dateStr ?? ""
        color: "white"
        font.features: { "tnum": 1 }
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    Text {
        id: size

        anchors.right: parent.right
        width: 101
        height: parent.height
        leftPadding: 8
        text: root.nameAlone ? "" : Qt.locale().formattedDataSize(root.entry?.size ?? 0, 2, Locale.DataSizeSIFormat)
        color: "white"
        font.features: { "tnum": 1 }
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
