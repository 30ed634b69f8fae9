pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What a native file was recorded with. */
ControlGrid {
    id: root

    required property VeskFile veskFile
    readonly property bool brefAdvanced: ((veskFile?.corrMode.value ?? 0) & Camera.CorrModeBrefAdv) !== 0

    ControlValueRow {
        label: qsTr("File Name")
        text: App.instance.baseNameFromPath(root.veskFile?.fileName ?? "")
    }
    PlaybackInfoRows {
        source: root.veskFile
    }
    ControlValueRow {
        label: qsTr("Black Ref Mode")
        text: root.brefAdvanced ? qsTr("Advanced") : qsTr("Normal")
    }
    ControlRow {
        rowHeight: 4
    }
    SaveButton {
        source: root.veskFile
    }
}
