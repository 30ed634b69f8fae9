pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** Which frames are saved, and of what. */
SaveForm {
    id: root

    required property PlaybackVeskObject source
    required property SaveRange range
    readonly property AbstractTake take: source as AbstractTake
    readonly property SsdTake ssdTake: source as SsdTake
    readonly property VeskFile file: source as VeskFile

    /** Brings the range to what is chosen; it may have been made for frames that are gone since. */
    function choose() {
        if (allFrames.checked)
            root.range.updateFrRange(root.range.firstFr, root.range.lastFr, true);
        else if (playbackFrames.checked)
            root.range.updateFrRange(root.source?.aFr, root.source?.bFr, true);
        else
            root.range.updateFrRange(root.range.startFr, root.range.endFr, true);
    }

    function show() {
        firstField.text = root.range.startFr;
        lastField.text = root.range.endFr;
    }

    Component.onCompleted: root.show()

    Connections {
        target: root.range

        function onUpdated() {
            root.show();
        }
        function onFirstFrChanged() {
            Qt.callLater(root.choose);
        }
        function onLastFrChanged() {
            Qt.callLater(root.choose);
        }
    }
    Connections {
        target: root.source

        function onValuesInitChanged() {
            Qt.callLater(root.choose);
        }
    }

    SaveLabel {
        text: root.file ? qsTr("VESK File:") : qsTr("Camera:")
        font.bold: true
        font.pixelSize: 13
    }
    SaveValue {
        name: root.file ? qsTr("VESK File") : qsTr("Camera")
        text: root.file ? App.instance.fileNameFromPath(root.file.fileName) : root.take?.camera?.name.value ?? ""
        font.bold: true
        font.pixelSize: 13
    }
    SaveLabel {
        text: root.ssdTake ? qsTr("SSD Take:") : qsTr("Take:")
        visible: !root.file
    }
    SaveValue {
        name: root.ssdTake ? qsTr("SSD Take") : qsTr("Take")
        text: root.ssdTake ? App.instance.fileNameFromPath(root.ssdTake.name) : root.take?.takeId ?? ""
        visible: !root.file
    }
    SaveLabel {
        text: qsTr("Save:")
    }
    RowLayout {
        Layout.columnSpan: 3
        Layout.preferredHeight: 24
        spacing: 10

        RadioButton {
            id: allFrames

            leftPadding: 0
            text: qsTr("All frames")
            Accessible.name: text
            onClicked: root.choose()
        }
        RadioButton {
            id: playbackFrames

            text: qsTr("Playback Frames")
            checked: true
            Accessible.name: text
            onClicked: root.choose()
        }
        RadioButton {
            id: selection

            text: qsTr("Selection")
            Accessible.name: text
        }
    }
    SaveLabel {
        text: qsTr("First Frame:")
    }
    SaveFrameField {
        id: firstField

        name: qsTr("First Frame")
        enabled: selection.checked
        onEditingFinished: root.range.updateFrRange(parseInt(text), root.range.endFr, false)
    }
    SaveLabel {
        text: qsTr("Last Frame:")
    }
    SaveFrameField {
        id: lastField

        name: qsTr("Last Frame")
        enabled: selection.checked
        onEditingFinished: root.range.updateFrRange(root.range.startFr, parseInt(text), true)
    }
    SaveLabel {
        text: qsTr("Frame Count:")
    }
    SaveValue {
        name: qsTr("Frame Count")
        text: root.range.frCnt + qsTr("  of  ") + (root.source?.frCnt.value ?? 0)
    }
}
