pragma ComponentBehavior: Bound

import Vesk

/** The main area of a selected recording on a camera's drive. */
PlaybackView {
    id: root

    required property SsdTake ssdTake

    source: root.ssdTake

    SsdTakeControlBar {
        ssdTake: root.ssdTake
    }
}
