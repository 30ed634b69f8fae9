pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The lens that a recording was made with. */
ControlGrid {
    id: root

    required property PlaybackVeskObject source
    readonly property string mount: source?.lensMount.value ?? ""
    readonly property real focalLength: source?.lensFocalLen.value ?? 0
    readonly property real focusDistance: source?.lensFocusDist.value ?? 0
    readonly property bool focusedToInfinity: focusDistance === 65535
    readonly property real fstop: source?.lensFstop.value ?? 0

    /** A number that the camera may have rounded to single precision. */
    function shortText(number) {
        return String(Number(number.toPrecision(6)));
    }

    ControlValueRow {
        label: qsTr("Mount")
        text: root.mount
    }
    ControlValueRow {
        label: qsTr("Name")
        text: root.source?.lensName.value ?? ""
        visible: root.mount !== "" && root.mount !== "Passive"
    }
    ControlValueRow {
        label: qsTr("Focal Length")
        text: root.focalLength + " mm"
        visible: root.focalLength !== 0
    }
    ControlValueRow {
        label: qsTr("Focus Distance")
        text: root.focusedToInfinity ? "\uF3B8" : root.shortText(root.focusDistance) + " m"
        valueFont.family: root.focusedToInfinity ? Theme.iconFont : "Inter"
        visible: root.focusDistance !== 0
    }
    ControlValueRow {
        label: qsTr("F-stop")
        text: "f/" + root.shortText(root.fstop)
        visible: root.fstop !== 0
    }
}
