pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The box of a source with a tab of its own: an icon, the name and, at times, a row under the name. */
TabBox {
    id: root

    required property string iconText
    required property string label
    property color iconColor: "white"
    /** Shown under the name; null for nothing. */
    property Component statusRow: null

    anchors.horizontalCenter: parent?.horizontalCenter
    width: parent ? parent.width - 16 : 0
    height: 50
    name: label

    Icon {
        id: icon

        width: root.height
        height: root.height
        text: root.iconText
        font.pixelSize: 24
        color: root.iconColor
    }
    Column {
        anchors.left: icon.right
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2

        ElidedLabel {
            width: parent.width
            text: root.label
            color: "white"
            Accessible.ignored: true
        }
        Loader {
            active: root.statusRow !== null
            visible: active
            sourceComponent: root.statusRow
        }
    }
}
