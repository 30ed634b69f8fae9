pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A row that tells a value and has a button to edit it elsewhere. */
ControlRow {
    id: root

    required property string text
    required property string editName

    signal edit

    ElidedLabel {
        anchors.left: parent.left
        anchors.leftMargin: 5
        anchors.right: editButton.left
        height: parent.height
        text: root.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.role: Accessible.StaticText
        Accessible.name: root.label
        Accessible.description: text
    }
    IconButton {
        id: editButton

        anchors.right: parent.right
        anchors.rightMargin: 5
        width: 20
        height: parent.height
        iconText: "\uEC82"
        name: root.editName
        iconSize: 14
        hoverSize: 18
        onClicked: root.edit()
    }
}
