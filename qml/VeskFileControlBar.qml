pragma ComponentBehavior: Bound

import Vesk

/** The sections of a native file. */
PlaybackControlBar {
    id: root

    required property VeskFile veskFile

    source: root.veskFile
    label: qsTr("VESK File")
    content: RecordingInfoControl {
        source: root.veskFile
        label: qsTr("File Name")
        path: root.veskFile?.fileName ?? ""
    }
}
