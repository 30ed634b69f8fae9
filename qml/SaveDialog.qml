pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Makes a save of a range of frames, starting from how the last one was made. */
DialogWindow {
    id: root

    required property PlaybackVeskObject source
    property alias startFr: range.startFr
    property alias frCnt: range.frCnt
    readonly property alias endFr: range.endFr
    readonly property bool savable: (root.source?.valuesInit ?? false) && range.frCnt > 0

    function save() {
        // What is being typed counts.
        flickable.forceActiveFocus();
        if (!root.savable)
            return;
        App.instance.saveManager.createSaveJob(root.source, range.startFr, range.frCnt, target.dest, target.format,
                                               target.codec, target.frameRate, target.quality,
                                               target.nameless ? "" : target.fileName, target.folder);
        target.store();
        root.close();
        App.instance.setNullVeskObject(VeskApp.SaveProgress);
    }

    title: qsTr("Save")
    modality: Qt.ApplicationModal
    fixedWidth: 480
    fixedHeight: 640
    maximumWidth: 960

    SaveRange {
        id: range

        source: root.source
    }
    SaveTarget {
        id: target

        source: root.source
    }

    Flickable {
        id: flickable

        anchors.fill: parent
        anchors.margins: Theme.dialogMargin
        contentHeight: column.height
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        flickDeceleration: Theme.flickDeceleration
        ScrollBar.vertical: ScrollBar {}

        Column {
            id: column

            width: flickable.width
            spacing: 2

            CollapsiblePane {
                width: parent.width
                label: qsTr("Source")
                content: SaveSourcePane {
                    source: root.source
                    range: range
                }
            }
            CollapsiblePane {
                width: parent.width
                label: qsTr("Destination")
                content: SaveDestinationPane {
                    target: target
                }
            }
            CollapsiblePane {
                width: parent.width
                label: qsTr("Format")
                content: SaveFormatPane {
                    source: root.source
                    range: range
                    target: target
                }
            }
        }
    }
    FocusFollower {
        flickable: flickable
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("Save")
            enabled: root.savable
            onClicked: root.save()
        }
        DialogButton {
            text: qsTr("Cancel")
            onClicked: root.close()
        }
    }
}
