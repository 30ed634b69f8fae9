pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The camera's own drive. */
ControlGrid {
    id: root

    required property Camera camera
    readonly property int ssdState: camera.ssdState.value ?? 0
    readonly property bool ssdReady: ssdState === Camera.SsdReady
    readonly property int writeState: camera.ssdWrState.value ?? 0
    /** The drive may be taken away or emptied. */
    readonly property bool free: writeState === Camera.SsdWrIdle
        && (ssdReady || ssdState === Camera.SsdUnformatted)

    readonly property bool formattable: (camera.featureSsdFormat.value ?? 0) > 0

    function stateText() {
        switch (root.ssdState) {
        case Camera.SsdRemoved:
            return qsTr("Removed");
        case Camera.SsdInsert:
        case Camera.SsdEnable:
            return qsTr("Mounting");
        case Camera.SsdReady:
            return root.writeState === Camera.SsdWrSave
                ? qsTr("Saving...") + (root.camera.ssdProgress.value ?? 0) + "%" : qsTr("Ready");
        case Camera.SsdShutdown:
        case Camera.SsdPowerDown:
            return qsTr("Ejecting");
        case Camera.SsdOff:
            return qsTr("Ejected");
        case Camera.SsdUnformatted:
            return qsTr("Unformatted");
        case Camera.SsdFormat:
            return qsTr("Formatting...");
        default:
            return qsTr("Error");
        }
    }

    function gigabytes(bytes) {
        return (Number(bytes ?? 0) / 1000000000).toFixed(0) + " GB";
    }

    ControlValueRow {
        label: qsTr("State")
        text: root.stateText()
    }
    ControlValueRow {
        label: qsTr("Name")
        text: root.camera.ssdName.value ?? ""
    }
    ControlValueRow {
        label: qsTr("Storage Used")
        text: root.ssdReady ? qsTr("%1 of %2").arg(root.gigabytes(root.camera.ssdUsed.value))
                                  .arg(root.gigabytes(root.camera.ssdSize.value)) : ""
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: qsTr("Open SSD Take")
            enabled: root.ssdReady
            onClicked: takeOpen.list()
        }
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: "\uEC87"
            font.family: Theme.iconFont
            font.pixelSize: 20
            enabled: root.free
            Accessible.name: qsTr("Eject")
            ToolTip.visible: hovered
            ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
            ToolTip.text: qsTr("Eject")
            onClicked: root.camera.ssdUmount()
        }
    }
    ControlRow {
        rowHeight: 4
        visible: root.formattable
    }
    ControlRow {
        rowHeight: Theme.buttonHeight
        visible: root.formattable

        ControlButton {
            text: qsTr("Format")
            enabled: root.free && root.formattable
            onClicked: formatDialog.open()
        }
    }
    SsdTakeOpenLoader {
        id: takeOpen

        camera: root.camera
    }
    DialogLoader {
        id: formatDialog

        sourceComponent: SsdFormatDialog {
            camera: root.camera
            formatOK: root.free && root.formattable
        }
    }
}
