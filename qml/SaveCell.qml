pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One cell of the list of saves: a glyph, unless it is empty, and a text. */
Item {
    id: root

    required property string name
    required property string text
    property string iconText: ""
    property int elide: Text.ElideRight

    height: parent?.height ?? 0
    Accessible.role: Accessible.StaticText
    Accessible.name: root.name
    Accessible.description: root.text

    Icon {
        id: icon

        x: 8
        width: root.iconText === "" ? 0 : 24
        height: parent.height
        text: root.iconText
        font.pixelSize: 16
    }
    ElidedLabel {
        anchors.left: icon.right
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.leftMargin: root.iconText === "" ? 0 : 6
        height: parent.height
        text: root.text
        elide: root.elide
        color: "white"
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
