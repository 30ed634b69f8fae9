pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One electrical line: its signal, how it is carried, and the timing fields that go with it. */
ControlGrid {
    id: root

    required property Camera camera
    required property CameraIO io

    ComboRow {
        label: qsTr("Signal")
        model: root.io.signalList
        currentIndex: root.io.signalIndex
        onChosen: index => root.io.setSignalByIndex(index)
    }
    ComboRow {
        label: qsTr("Mode")
        model: root.io.modeList
        currentIndex: root.io.modeIndex
        visible: count > 1
        onChosen: index => root.io.setModeByIndex(index)
    }
    ComboRow {
        label: qsTr("Polarity")
        model: root.io.polarityList
        currentIndex: root.io.polarityIndex
        visible: count > 1
        onChosen: index => root.io.setPolarityByIndex(index)
    }
    IOTimingRow {
        label: qsTr("Delay")
        camera: root.camera
        clkFreq: root.io.clkFreq
        field: root.io.delay
        unitsKey: root.io.token + "_delay_units"
        visible: root.io.delayEn
    }
    IOTimingRow {
        label: qsTr("Min. Width")
        camera: root.camera
        clkFreq: root.io.clkFreq
        field: root.io.min
        unitsKey: root.io.token + "_min_units"
        visible: root.io.minEn
    }
    IOTimingRow {
        label: qsTr("Max. Width")
        camera: root.camera
        clkFreq: root.io.clkFreq
        field: root.io.max
        unitsKey: root.io.token + "_max_units"
        visible: root.io.maxEn
    }
    IOTimingRow {
        label: qsTr("Filter")
        camera: root.camera
        clkFreq: root.io.clkFreq
        field: root.io.filter
        unitsKey: root.io.token + "_filter_units"
        to: 262143
        visible: root.io.filterEn
    }
}
