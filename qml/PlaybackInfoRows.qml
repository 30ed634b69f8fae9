pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What a recording was made with; rows of a ControlGrid. */
Column {
    id: root

    required property PlaybackVeskObject source

    width: parent?.width ?? 0

    ControlValueRow {
        label: qsTr("Resolution")
        text: root.source?.res.value ?? ""
    }
    ControlValueRow {
        label: qsTr("Frame Rate")
        text: (root.source?.frRate.value ?? 0).toFixed(0) + " fps"
    }
    ControlValueRow {
        label: qsTr("Exposure Time")
        text: (root.source?.expTime.value ?? 0).toFixed(2) + " µs"
    }
    ControlValueRow {
        label: qsTr("Frame Sync Mode")
        text: (root.source?.fsyncMode.value ?? 0) === 0 ? qsTr("Internal") : qsTr("External")
    }
}
