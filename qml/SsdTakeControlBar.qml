pragma ComponentBehavior: Bound

import Vesk

/** The sections of a recording on a camera's drive. */
PlaybackControlBar {
    id: root

    required property SsdTake ssdTake

    source: root.ssdTake
    label: qsTr("SSD Take")
    content: RecordingInfoControl {
        source: root.ssdTake
        label: qsTr("Name")
        path: root.ssdTake?.name ?? ""
    }
}
