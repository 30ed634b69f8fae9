pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One factor of the white balance: a slider and, under it, a field. */
ControlRow {
    id: root

    /** A value object; it can be written whichever kind of source it belongs to. */
    required property var adjValue
    readonly property real number: adjValue.value ?? 1

    function write(number) {
        root.adjValue.value = number;
    }

    subRow: true
    rowHeight: 44

    LogSlider {
        id: slider

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.widgetWidth
        height: 22
        name: root.label
        number: root.number
        onNumberMoved: number => root.write(number)
    }
    AdjTextField {
        anchors.top: slider.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.widgetWidth
        height: 20
        name: root.label
        value: root.number
        validator: DoubleValidator {
            bottom: 0.1
            top: 10
            decimals: 2
            notation: DoubleValidator.StandardNotation
            locale: "C"
        }
        onEditingFinished: number => root.write(number)
    }
}
