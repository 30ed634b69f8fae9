pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Which camera took the recording. */
ControlGrid {
    id: root

    required property PlaybackVeskObject source

    ControlValueRow {
        label: qsTr("Name")
        text: root.source?.cameraName.value ?? ""
    }
    ControlValueRow {
        label: qsTr("Serial")
        text: root.source?.cameraSerial.value ?? ""
    }
    ControlValueRow {
        label: qsTr("Model")
        text: root.source?.cameraModel.value ?? ""
    }
    ControlValueRow {
        label: qsTr("Firmware Version")
        text: root.source?.fwVer.value ?? ""
    }
}
