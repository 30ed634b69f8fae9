pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Plays a source in one way, and pauses it while it plays that way. */
TransportButton {
    id: root

    required property PlaybackVeskObject source
    required property int playState
    required property string playGlyph
    required property string playName
    readonly property bool playing: source?.state === playState

    /** The source is to play in this way. */
    signal started

    iconText: playing ? "\uEFD8" : playGlyph
    name: playing ? qsTr("Pause") : playName
    onChosen: {
        if (root.playing)
            root.source.pause();
        else
            root.started();
    }
}
