pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/**
 * The tab of one camera and, below it, those of its takes. Its camera is null for a moment when the camera has
 * just been removed.
 */
Item {
    id: root

    required property Camera camera
    readonly property bool selected: camera?.selected ?? false
    readonly property int acqState: camera?.acqState.value ?? 0
    readonly property bool recording: acqState === 2 || acqState === 6
    readonly property bool triggered: acqState === 3
    readonly property bool saving: camera?.ssdState.value === Camera.SsdReady
        && camera?.ssdWrState.value === Camera.SsdWrSave
    property bool blinkOn: true

    implicitHeight: Math.max(box.height, takes.y + takes.height, ssdTakes.y + ssdTakes.height)
    z: selected ? 1 : 0
    onTriggeredChanged: root.blinkOn = true

    Timer {
        interval: 333
        repeat: true
        running: root.triggered
        onTriggered: root.blinkOn = !root.blinkOn
    }
    SourceTabBox {
        id: box

        iconText: "\uF288"
        iconColor: root.recording || (root.triggered && root.blinkOn) ? "red" : "white"
        label: root.camera?.name.value ?? ""
        name: label || (root.camera?.ipString ?? "")
        statusRow: root.saving ? ssdRow : null
        selected: root.selected
        menu: menu
        onChosen: App.instance.selectedVeskObject = root.camera

        Menu {
            id: menu

            width: Theme.contextMenuWidth

            SsdTakeOpenMenuItem {
                camera: root.camera
                dialog: ssdTakeOpen
            }
            TakesDeleteAllMenuItem {
                camera: root.camera
                deleteAllDialog: deleteAll
            }
            CameraDisconnectMenuItem {
                camera: root.camera
            }
        }
    }
    // The borders of neighbours lie on each other, in each column and between the two.
    Column {
        id: takes

        anchors.horizontalCenter: parent.horizontalCenter
        y: box.height - 2
        width: box.width
        spacing: -2

        Repeater {
            id: takeTabs

            model: root.camera?.savedTakes ?? null

            TakeTab {
                required property Take qtObject

                width: takes.width
                take: qtObject
            }
        }
    }
    Column {
        id: ssdTakes

        anchors.horizontalCenter: parent.horizontalCenter
        y: takes.y + (takeTabs.count > 0 ? takes.height - 2 : 0)
        width: box.width
        spacing: -2

        Repeater {
            model: root.camera?.ssdTakes ?? null

            SsdTakeTab {
                required property SsdTake qtObject

                width: ssdTakes.width
                ssdTake: qtObject
            }
        }
    }
    Component {
        id: ssdRow

        CameraTabSsdRow {
            percent: root.camera?.ssdProgress.value ?? 0
        }
    }
    DialogLoader {
        id: deleteAll

        sourceComponent: TakesDeleteAllDialog {
            camera: root.camera
        }
    }
    SsdTakeOpenLoader {
        id: ssdTakeOpen

        camera: root.camera
    }
}
