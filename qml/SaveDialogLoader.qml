pragma ComponentBehavior: Bound

import Vesk

/** Holds the dialog that saves frames of a source, while it is open. */
DialogLoader {
    id: root

    /** Null for a moment when the source has gone. */
    required property PlaybackVeskObject source

    sourceComponent: SaveDialog {
        source: root.source
    }
    // A question about frames that are gone is not to be answered for others.
    onSourceChanged: root.active = false
}
