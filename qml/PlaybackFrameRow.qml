pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** The numbers of the current frame and of the markers, which brackets at both sides set to that frame. */
RowLayout {
    id: root

    required property PlaybackVeskObject source
    readonly property bool known: source?.valuesInit ?? false

    function textOf(fr) {
        return root.known ? String(fr) : "";
    }

    spacing: 0

    MarkerButton {
        Layout.fillHeight: true
        iconText: "["
        name: qsTr("Start of the range here")
        atEnd: root.source?.aFr === root.source?.firstFr.value
        onChosen: root.source.aFr = root.source.fr
        onReset: root.source.aFr = root.source.firstFr.value
    }
    FrameField {
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        name: qsTr("Start of the range")
        shown: root.textOf(root.source?.aFr)
        horizontalAlignment: TextInput.AlignLeft
        onEntered: fr => root.source.aFr = fr
    }
    FrameField {
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        name: qsTr("Frame")
        shown: root.textOf(root.source?.fr)
        horizontalAlignment: TextInput.AlignHCenter
        onEntered: fr => root.source.fr = fr
    }
    FrameField {
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        name: qsTr("End of the range")
        shown: root.textOf(root.source?.bFr)
        horizontalAlignment: TextInput.AlignRight
        onEntered: fr => root.source.bFr = fr
    }
    MarkerButton {
        Layout.fillHeight: true
        iconText: "]"
        name: qsTr("End of the range here")
        atEnd: root.source?.bFr === root.source?.lastFr.value
        onChosen: root.source.bFr = root.source.fr
        onReset: root.source.bFr = root.source.lastFr.value
    }
}
