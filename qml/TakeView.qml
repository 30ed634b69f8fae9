pragma ComponentBehavior: Bound

import Vesk

/** The main area of a selected take. */
PlaybackView {
    id: root

    required property Take take

    source: root.take

    TakeControlBar {
        take: root.take
    }
}
