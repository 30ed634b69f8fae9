pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The box of a recording below the tab of its camera: an icon and a name. */
TabBox {
    id: root

    required property string iconText
    required property string label
    property color iconColor: "white"

    height: 28
    name: root.label

    Icon {
        id: icon

        x: 5
        width: 50
        height: parent.height
        text: root.iconText
        font.pixelSize: 16
        color: root.iconColor
    }
    ElidedLabel {
        anchors.left: icon.right
        anchors.right: parent.right
        anchors.rightMargin: 8
        height: parent.height
        text: root.label
        color: "white"
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
