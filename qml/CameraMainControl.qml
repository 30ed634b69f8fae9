pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Which camera this is. */
ControlGrid {
    id: root

    required property Camera camera

    ControlRow {
        id: nameRow

        label: qsTr("Name")

        ElidedLabel {
            anchors.left: parent.left
            anchors.leftMargin: 5
            anchors.right: editButton.left
            height: parent.height
            text: root.camera.name.value ?? ""
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Accessible.role: Accessible.StaticText
            Accessible.name: nameRow.label
            Accessible.description: text
        }
        IconButton {
            id: editButton

            anchors.right: parent.right
            anchors.rightMargin: 5
            width: 20
            height: parent.height
            iconText: "\uEC82"
            name: qsTr("Edit name")
            iconSize: 14
            hoverSize: 18
            onClicked: nameDialog.open()
        }
    }
    ControlValueRow {
        label: qsTr("Serial")
        text: root.camera.serial.value ?? ""
    }
    ControlValueRow {
        label: qsTr("IP Address")
        text: root.camera.ipString
    }
    ControlValueRow {
        label: qsTr("Model")
        text: root.camera.cameraModel.value ?? ""
    }
    DialogLoader {
        id: nameDialog

        sourceComponent: CameraNameEditDialog {
            camera: root.camera
        }
    }
}
