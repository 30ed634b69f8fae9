pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A timing field of an electrical line, in clocks; the unit that it is shown in is kept with the camera. */
ControlRow {
    id: root

    required property Camera camera
    required property real clkFreq
    required property var field
    required property string unitsKey
    property int to: 268435455

    function readUnits() {
        // Settings can be edited by hand.
        const units = Number(root.camera.setting(root.unitsKey, IOSpinBox.Clocks));
        box.units = box.unitTable[units] ? units : IOSpinBox.Clocks;
    }

    rowHeight: Theme.buttonHeight

    Connections {
        target: root.camera

        function onCameraConnected() {
            root.readUnits();
        }
    }
    IOSpinBox {
        id: box

        anchors.centerIn: parent
        width: root.widgetWidth
        height: parent.height
        clkFreq: root.clkFreq
        from: 0
        to: root.to
        value: root.field.value ?? 0
        Accessible.name: root.label
        Component.onCompleted: root.readUnits()
        onUnitsChanged: root.camera.setSetting(root.unitsKey, units)
        onValueModified: {
            root.field.value = box.value;
            box.value = Qt.binding(() => root.field.value ?? 0);
        }
    }
}
