pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** Plays a recording: the transport, the bar with its markers, and the pace. */
Rectangle {
    id: root

    required property PlaybackVeskObject source

    /** In a text the keys move the cursor and type a space. */
    function isTyping() {
        return root.Window.activeFocusItem instanceof TextInput;
    }

    /** Does what a key is for; false for any other key. */
    function act(key) {
        if (key === Qt.Key_Left)
            root.source.stepFrRev();
        else if (key === Qt.Key_Right)
            root.source.stepFrFwd();
        else if (key === Qt.Key_Space && root.source.state !== PlaybackVeskObject.Paused)
            root.source.pause();
        else if (key === Qt.Key_Space)
            root.source.play();
        else
            return false;
        return true;
    }

    color: Theme.palette.base
    implicitHeight: row.implicitHeight
    Keys.onPressed: event => {
        const plain = (event.modifiers & ~Qt.KeypadModifier) === Qt.NoModifier;
        event.accepted = plain && root.source && !root.isTyping() && root.act(event.key);
    }

    RowLayout {
        id: row

        width: parent.width
        spacing: 20

        PlaybackTransport {
            Layout.preferredWidth: 200
            Layout.leftMargin: 10
            Layout.bottomMargin: 10
            source: root.source
        }
        PlaybackTimeline {
            Layout.fillWidth: true
            source: root.source
        }
        PlaybackSettings {
            Layout.preferredWidth: 145
            Layout.maximumWidth: 145
            Layout.rightMargin: 20
            Layout.bottomMargin: 10
            source: root.source
        }
    }
}
