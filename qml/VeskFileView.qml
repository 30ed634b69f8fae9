pragma ComponentBehavior: Bound

import Vesk

/** The main area of a selected native file. */
PlaybackView {
    id: root

    required property VeskFile veskFile

    source: root.veskFile

    VeskFileControlBar {
        veskFile: root.veskFile
    }
}
