pragma ComponentBehavior: Bound

import Vesk

/** The sections of a take. */
PlaybackControlBar {
    id: root

    required property Take take

    source: root.take
    label: qsTr("Take")
    content: TakeInfoControl {
        take: root.take
    }
}
