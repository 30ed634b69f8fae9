pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Recording: the state of the camera, the black reference and the button that records. */
ControlGrid {
    id: root

    required property Camera camera
    required property int acqState
    required property bool stbyOrRec
    readonly property int brefState: camera.brefState.value ?? 0
    readonly property list<string> stateNames: ["", "STBY", "REC", "TRIG", "", "", "REC"]
    readonly property list<string> recordTexts: ["", qsTr("Record"), qsTr("Trigger"), qsTr("Abort Recording")]

    function blackReference() {
        if (root.brefState & Camera.BrefFull)
            brefFull.open();
        else
            root.camera.bref();
    }

    function recordTriggerOrAbort() {
        if (root.acqState === 2)
            root.camera.trigger();
        else if (root.acqState === 3)
            root.camera.abort();
        else if (root.acqState === 1 && root.camera.takesAvailable())
            root.camera.record();
        else if (root.acqState === 1)
            allTakesRecorded.open();
    }

    ControlValueRow {
        label: qsTr("State")
        text: root.stateNames[root.acqState] ?? ""
        valueColor: root.acqState === 1 ? "green" : "red"
        valueFont.pixelSize: 14
    }
    CameraAcqSettings {
        camera: root.camera
        stbyOrRec: root.stbyOrRec
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.largeButtonHeight

        ControlButton {
            text: qsTr("Black Reference")
            enabled: root.stbyOrRec && !(root.brefState & Camera.BrefInProgress)
            onClicked: root.blackReference()
        }
        Icon {
            anchors.right: parent.left
            anchors.rightMargin: 6
            height: parent.height
            visible: (root.brefState & Camera.BrefInvalid) !== 0
            text: "\uECA1"
            font.pixelSize: 20
            color: Theme.palette.highlight
            Accessible.ignored: false
            Accessible.role: Accessible.StaticText
            Accessible.name: qsTr("Black reference is invalid")
            ToolTip.visible: warningHover.hovered
            ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
            ToolTip.text: qsTr("Black reference is invalid")

            HoverHandler {
                id: warningHover
            }
        }
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.largeButtonHeight

        ControlButton {
            text: root.recordTexts[root.acqState] ?? ""
            enabled: root.acqState >= 1 && root.acqState <= 3
            // On press: a high-speed event does not wait for the finger to come up.
            onPressed: root.recordTriggerOrAbort()
            Accessible.name: text || qsTr("Recording")
            Accessible.onPressAction: root.recordTriggerOrAbort()
        }
    }
    DialogLoader {
        id: brefFull

        sourceComponent: BrefSlotsFullDialog {}
    }
    DialogLoader {
        id: allTakesRecorded

        sourceComponent: AllTakesRecordedDialog {}
    }
}
