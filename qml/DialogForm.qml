import QtQuick
import QtQuick.Layouts
import Vesk

/** Rows of label and value in a larger dialog; the first one tells the camera. */
GridLayout {
    id: root

    required property Camera camera

    anchors.left: parent?.left
    anchors.right: parent?.right
    anchors.top: parent?.top
    anchors.margins: Theme.dialogMargin
    columns: 2
    rowSpacing: 10
    columnSpacing: 14

    DialogLabel {
        text: qsTr("Camera:")
        font.bold: true
        font.pixelSize: 13
    }
    ElidedLabel {
        Layout.fillWidth: true
        Layout.preferredHeight: Theme.dialogRowHeight
        verticalAlignment: Text.AlignVCenter
        text: root.camera.name.value ?? ""
        font.bold: true
        font.pixelSize: 13
        Accessible.role: Accessible.StaticText
        Accessible.name: qsTr("Camera")
        Accessible.description: text
    }
}
