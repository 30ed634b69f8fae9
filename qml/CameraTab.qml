pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The tab of one camera. Its camera is null for a moment when the camera has just been removed. */
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

    function select() {
        App.instance.selectedVeskObject = root.camera;
    }

    implicitHeight: box.height
    z: selected ? 1 : 0
    onTriggeredChanged: root.blinkOn = true

    Timer {
        interval: 333
        repeat: true
        running: root.triggered
        onTriggered: root.blinkOn = !root.blinkOn
    }
    Rectangle {
        id: box

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.width - 16
        height: 50
        color: Theme.boxColor
        border.color: root.selected ? Theme.palette.highlight : Theme.edgeColor
        border.width: 2
        activeFocusOnTab: true
        Accessible.role: Accessible.PageTab
        Accessible.name: nameLabel.text || (root.camera?.ipString ?? "")
        Accessible.selectable: true
        Accessible.selected: root.selected
        Accessible.onPressAction: root.select()
        Keys.onSpacePressed: root.select()
        Keys.onReturnPressed: root.select()
        Keys.onMenuPressed: menu.popup(box, 0, box.height)

        Rectangle {
            anchors.fill: parent
            anchors.margins: 4
            color: "transparent"
            border.color: Theme.palette.highlight
            visible: box.activeFocus
        }
        Icon {
            id: icon

            width: box.height
            height: box.height
            text: "\uF288"
            font.pixelSize: 24
            color: root.recording || (root.triggered && root.blinkOn) ? "red" : "white"
        }
        Column {
            anchors.left: icon.right
            anchors.right: parent.right
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2

            ElidedLabel {
                id: nameLabel

                width: parent.width
                text: root.camera?.name.value ?? ""
                color: "white"
                Accessible.ignored: true
            }
            Loader {
                active: root.saving
                visible: active
                sourceComponent: CameraTabSsdRow {
                    percent: root.camera?.ssdProgress.value ?? 0
                }
            }
        }
        TapHandler {
            onTapped: root.select()
        }
        TapHandler {
            acceptedButtons: Qt.RightButton
            onTapped: menu.popup()
        }
        Menu {
            id: menu

            width: Theme.contextMenuWidth

            TakesDeleteAllMenuItem {
                camera: root.camera
                deleteAllDialog: deleteAll
            }
            CameraDisconnectMenuItem {
                camera: root.camera
            }
        }
    }
    DialogLoader {
        id: deleteAll

        sourceComponent: TakesDeleteAllDialog {
            camera: root.camera
        }
    }
}
