pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Lists the recordings on a camera's drive, of which one is opened. */
DialogWindow {
    id: root

    required property Camera camera
    readonly property SsdLsSortProxyModel entries: camera?.ssdLsEntries ?? null
    readonly property bool openable: (entries?.selectedCount ?? 0) > 0
    /** The first picture is an empty one: it holds up the program until it is on the display. */
    property bool drawn: false

    function accept() {
        if (!root.openable)
            return;
        root.camera.ssdFOpen();
        root.close();
    }

    title: qsTr("Open SSD Take")
    fixedWidth: 512
    fixedHeight: 512
    minimumHeight: 300
    maximumWidth: 16777215
    maximumHeight: 16777215
    Component.onCompleted: root.entries.shownBy = root
    onFrameSwapped: root.drawn = true

    ListBox {
        anchors.fill: parent
        anchors.margins: Theme.dialogMargin
        opacity: root.drawn ? 1 : 0

        SsdLsView {
            anchors.fill: parent
            anchors.margins: 1
            focus: true
            entries: root.entries
            onAccepted: root.accept()
        }
    }

    footer: DialogFooter {
        opacity: root.drawn ? 1 : 0

        DialogButton {
            text: qsTr("Open")
            enabled: root.openable
            onClicked: root.accept()
        }
        DialogButton {
            text: qsTr("Cancel")
            onClicked: root.close()
        }
    }
}
