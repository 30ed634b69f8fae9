pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Which camera this is. */
ControlGrid {
    id: root

    required property Camera camera

    EditableValueRow {
        label: qsTr("Name")
        text: root.camera.name.value ?? ""
        editName: qsTr("Edit name")
        onEdit: nameDialog.open()
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
