pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What a take was recorded with, how it is corrected, and its deletion. */
ControlGrid {
    id: root

    required property Take take
    /** Declared as a value that can be read; that of a take can be written, too. */
    readonly property var corrMode: take?.corrMode

    ControlValueRow {
        label: qsTr("Take Number")
        text: root.take?.takeId ?? ""
    }
    PlaybackInfoRows {
        source: root.take
    }
    BrefModeRow {
        camera: root.take?.camera ?? null
        corrMode: root.corrMode?.value ?? 0
        fsyncMode: root.take?.fsyncMode.value ?? 0
        onCorrModeChosen: corrMode => root.corrMode.value = corrMode
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: qsTr("Delete...")
            onClicked: deletion.start()
        }
    }
    SaveButton {
        source: root.take
    }
    TakeDeletion {
        id: deletion

        take: root.take
    }
}
