pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The bar of a recording with the frame numbers under it, in whose place a search tells where it is. */
Column {
    id: root

    required property PlaybackVeskObject source
    readonly property bool searching: source?.imgSearch.state === ImgSearch.Searching

    /** Opens the bar to the recording's frames; only then do its handles take numbers. */
    function setUp() {
        if (!(root.source?.valuesInit ?? false))
            return;
        scrubber.setFrRange(root.source.firstFr.value, root.source.lastFr.value);
        scrubber.aMarker.fr = Qt.binding(() => root.source?.aFr ?? 0);
        scrubber.bMarker.fr = Qt.binding(() => root.source?.bFr ?? 0);
        root.bindHead();
    }

    function bindHead() {
        scrubber.playHead.fr = Qt.binding(() => root.source?.fr ?? 0);
    }

    /** A play head that a marker has kept from the current frame goes there when the marker makes way. */
    function releaseHead() {
        if (root.source && scrubber.playHead.fr !== root.source.fr)
            root.bindHead();
    }

    /** As a click on a button does: a number that is being typed is taken, and the keys play again. */
    function endEdit() {
        root.forceActiveFocus();
        root.focus = false;
    }

    spacing: 6
    Component.onCompleted: root.setUp()

    Connections {
        target: root.source

        function onValuesInitChanged() {
            root.setUp();
        }
    }
    // A later recording in the same partition of the camera's memory.
    Connections {
        target: root.source?.firstFr ?? null

        function onValueChanged() {
            root.setUp();
        }
    }
    Connections {
        target: root.source?.lastFr ?? null

        function onValueChanged() {
            root.setUp();
        }
    }
    Connections {
        target: scrubber.aMarker

        function onPositionChanged() {
            root.releaseHead();
        }

        function onMoved() {
            root.source.aFr = scrubber.aMarker.fr;
        }
    }
    Connections {
        target: scrubber.bMarker

        function onPositionChanged() {
            root.releaseHead();
        }

        function onMoved() {
            root.source.bFr = scrubber.bMarker.fr;
        }
    }
    Connections {
        target: scrubber.playHead

        function onMoved() {
            root.source.fr = scrubber.playHead.fr;
        }
    }
    PlaybackScrubber {
        id: scrubber

        width: root.width
        onPressedChanged: {
            if (scrubber.pressed)
                root.endEdit();
        }
    }
    Item {
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.width - 12
        height: 24

        PlaybackFrameRow {
            anchors.fill: parent
            visible: !root.searching
            source: root.source
        }
        PlaybackSearchRow {
            anchors.horizontalCenter: parent.horizontalCenter
            height: parent.height
            visible: root.searching
            source: root.source
        }
    }
}
