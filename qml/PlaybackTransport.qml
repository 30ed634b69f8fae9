pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The buttons that play, step and skip. */
Column {
    id: root

    required property PlaybackVeskObject source
    readonly property bool pingPong: source?.repeatMode === PlaybackVeskObject.RepeatPingPong

    Row {
        width: root.width
        height: 50

        PlayButton {
            source: root.source
            playState: PlaybackVeskObject.PlayFastRev
            playGlyph: "\uF085"
            playName: qsTr("Rewind")
            onStarted: root.source.playFastRev()
        }
        PlayButton {
            source: root.source
            playState: PlaybackVeskObject.PlayRev
            playGlyph: "\uF4A7"
            playName: qsTr("Play backwards")
            onStarted: root.source.playRev()
        }
        PlayButton {
            source: root.source
            playState: PlaybackVeskObject.Play
            playGlyph: "\uF00A"
            playName: qsTr("Play")
            onStarted: root.source.play()
        }
        PlayButton {
            source: root.source
            playState: PlaybackVeskObject.PlayFastFwd
            playGlyph: "\uF176"
            playName: qsTr("Fast forward")
            onStarted: root.source.playFastFwd()
        }
        TransportButton {
            iconText: root.pingPong ? "\uEA61" : "\uF073"
            name: root.pingPong ? qsTr("Repeat back and forth") : qsTr("Repeat from the start")
            onChosen: root.source.repeatMode = root.pingPong ? PlaybackVeskObject.RepeatLoop
                                                            : PlaybackVeskObject.RepeatPingPong
        }
    }
    Row {
        width: root.width
        height: 40

        SkipButton {
            iconText: "\uF13F"
            name: qsTr("Skip back")
            endText: qsTr("First Frame")
            diffText: qsTr("Prev Image Diff")
            onEndChosen: root.source.fr = root.source.aFr
            onDiffChosen: root.source.imgSearch.start(false)
        }
        TransportButton {
            iconText: "\uF54D"
            name: qsTr("Step back")
            onChosen: root.source.stepFrRev()
        }
        TransportButton {
            iconText: "\uF201"
            name: qsTr("Go to the trigger")
            enabled: (root.source?.aFr ?? 1) <= 0 && (root.source?.bFr ?? -1) >= 0
            onChosen: root.source.fr = 0
        }
        TransportButton {
            iconText: "\uF54E"
            name: qsTr("Step forward")
            onChosen: root.source.stepFrFwd()
        }
        SkipButton {
            iconText: "\uF143"
            name: qsTr("Skip forward")
            endText: qsTr("Last Frame")
            diffText: qsTr("Next Image Diff")
            onEndChosen: root.source.fr = root.source.bFr
            onDiffChosen: root.source.imgSearch.start(true)
        }
    }
}
