pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The camera's firmware and its update. */
ControlGrid {
    id: root

    required property Camera camera
    readonly property bool updatable: (camera.featureQ4FW.value ?? 0) > 0

    ControlValueRow {
        label: qsTr("Version")
        // Firmware tells its version as a text or as a number.
        text: root.camera.fwVer.value || (root.camera.fwVerInt.value ?? "")
    }
    ControlRow {
        rowHeight: 4
        visible: root.updatable
    }
    ControlRow {
        rowHeight: Theme.buttonHeight
        visible: root.updatable

        ControlButton {
            text: qsTr("Firmware Update")
            enabled: root.updatable
            onClicked: updateDialog.open()
        }
    }
    DialogLoader {
        id: updateDialog

        sourceComponent: FWUpdateDialog {
            camera: root.camera
        }
    }
}
