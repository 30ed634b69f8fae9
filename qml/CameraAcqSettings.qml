pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What a recording is made with. */
Column {
    id: root

    required property Camera camera
    required property bool stbyOrRec
    readonly property real clkFreq: camera.clkFreq.value ?? 0
    readonly property int fsyncMode: camera.fsyncMode.value ?? 0

    /** The nearest number that a value of the camera can hold. */
    function limited(number) {
        return Math.max(-2147483648, Math.min(number, 2147483647));
    }

    width: parent?.width ?? 0

    ComboRow {
        label: qsTr("Resolution")
        model: root.camera.resList
        currentIndex: root.camera.resIndex
        choosable: root.stbyOrRec
        popupHeight: 150
        onChosen: (index, text) => root.camera.res.value = text
    }
    UnitsComboRow {
        label: qsTr("Frame Rate")
        labelColor: (root.camera.fsyncState.value ?? 0) < 0 ? "red" : "white"
        units: "fps"
        list: root.camera.frRateList
        listIndex: root.camera.frRateListIndex
        choosable: root.fsyncMode !== Camera.FsyncModeExt
        validator: PositiveValidator {}
        onEntered: text => {
            const rate = Math.min(Number(text), root.clkFreq);
            if (rate > 0)
                root.camera.frClks.value = root.limited(root.clkFreq / rate);
        }
    }
    UnitsComboRow {
        label: qsTr("Exposure Time")
        units: "µs"
        list: root.camera.expList
        listIndex: root.camera.expListIndex
        validator: PositiveValidator {}
        onEntered: text => root.camera.expClks.value = root.limited(root.clkFreq * Number(text) / 1000000)
    }
    UnitsComboRow {
        label: qsTr("Trigger Offset")
        units: "frames"
        list: root.camera.trigOffsetList
        listIndex: root.camera.trigOffsetListIndex
        choosable: root.stbyOrRec
        validator: WholeNumberValidator {}
        onEntered: text => root.camera.trigOffset.value = root.limited(Number(text))
    }
    ComboRow {
        label: qsTr("Frame Sync Mode")
        model: [qsTr("Internal"), qsTr("External")]
        currentIndex: root.fsyncMode
        onChosen: index => root.camera.fsyncMode.value = index
    }
    BrefModeRow {
        camera: root.camera
        corrMode: root.camera.corrMode.value ?? 0
        fsyncMode: root.fsyncMode
        onCorrModeChosen: corrMode => root.camera.corrMode.value = corrMode
    }
}
