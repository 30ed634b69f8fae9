pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The lens and the shutter. */
ControlGrid {
    id: root

    required property Camera camera
    readonly property int lensState: camera.lensState.value ?? 0
    readonly property bool lensReady: lensState === Camera.LensReady
    readonly property int lensFeatures: camera.featureLens.value ?? 0
    readonly property real focusDistance: camera.lensFocusDist.value ?? 0
    readonly property int shutterState: camera.shtrState.value ?? 0
    readonly property bool shutterClosed: shutterState === Camera.ShtrClosed || shutterState === Camera.ShtrFail
    readonly property bool motorFocus: (lensFeatures & Camera.LensFeatFocus) !== 0
        && (camera.lensAFSwitch.value ?? 0) === 0

    function lensName() {
        switch (root.lensState) {
        case Camera.LensRemoved:
            return "";
        case Camera.LensDetect:
            return qsTr("Detecting");
        case Camera.LensEnable:
            return qsTr("Initializing");
        case Camera.LensReady:
            return root.camera.lensName.value ?? "";
        default:
            return qsTr("Error");
        }
    }

    ControlValueRow {
        label: qsTr("Mount")
        text: root.camera.lensMount.value ?? ""
    }
    ControlValueRow {
        label: qsTr("Name")
        text: root.lensName()
        visible: root.lensState !== Camera.LensRemoved
    }
    ControlValueRow {
        label: qsTr("Focal Length")
        text: (root.camera.lensFocalLen.value ?? 0) + " mm"
        visible: root.lensReady
    }
    ControlValueRow {
        label: qsTr("Focus Distance")
        text: root.focusDistance === 0 ? "" : root.focusDistance === 65535 ? "\uF3B8" : root.focusDistance + " m"
        valueFont.family: root.focusDistance === 65535 ? Theme.iconFont : "Inter"
        visible: root.lensReady
    }
    ControlValueRow {
        label: qsTr("Focus")
        text: qsTr("Manual")
        visible: root.lensReady && !root.motorFocus
    }
    ControlRow {
        label: qsTr("Focus")
        rowHeight: 56
        visible: root.lensReady && root.motorFocus

        FocusButtons {
            anchors.centerIn: parent
            width: parent.width - 10
            height: 56
            onStepped: step => root.camera.lensFocus(step)
        }
    }
    UnitsComboRow {
        label: qsTr("F-stop")
        prefix: " f/"
        list: root.camera.fstopList
        listIndex: root.camera.fstopIndex
        unlisted: String(Number((root.camera.lensFstop.value ?? 0).toPrecision(6)))
        validator: PositiveValidator {}
        visible: choosable
        choosable: root.lensReady && (root.lensFeatures & Camera.LensFeatFstop) !== 0
        onEntered: text => root.camera.lensFstop.value = Number(text)
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: root.shutterClosed ? qsTr("Open Shutter") : qsTr("Close Shutter")
            enabled: ((root.camera.featureShtr.value ?? 0) & Camera.ShtrFeatHasShtr) !== 0
            onClicked: root.camera.shutterMove(!root.shutterClosed)
        }
    }
}
