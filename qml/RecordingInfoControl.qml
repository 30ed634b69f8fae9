pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What a recording that lies in a file was made with; nothing of it can be changed. */
ControlGrid {
    id: root

    required property PlaybackVeskObject source
    /** What the path is called. */
    required property string label
    required property string path
    readonly property bool brefAdvanced: ((source?.corrMode.value ?? 0) & Camera.CorrModeBrefAdv) !== 0

    ControlValueRow {
        label: root.label
        text: App.instance.baseNameFromPath(root.path)
    }
    PlaybackInfoRows {
        source: root.source
    }
    ControlValueRow {
        label: qsTr("Black Ref Mode")
        text: root.brefAdvanced ? qsTr("Advanced") : qsTr("Normal")
    }
    ControlRow {
        rowHeight: 4
    }
    SaveButton {
        source: root.source
    }
}
