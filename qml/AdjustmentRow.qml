pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One number of a picture's adjustment: a slider and, under it, a field. Only the user's action writes. */
ControlRow {
    id: root

    required property real number
    property bool logarithmic: false
    /** Range of the number; the logarithmic slider has no other. */
    property real lowest: logarithmic ? 0.1 : -1
    property real highest: logarithmic ? 10 : 1

    /** The user moved the slider or typed a number. */
    signal entered(real number)

    rowHeight: 44

    Loader {
        id: loader

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.widgetWidth
        height: 22
        sourceComponent: root.logarithmic ? logSlider : linearSlider
    }
    Component {
        id: logSlider

        LogSlider {
            name: root.label
            number: root.number
            onNumberMoved: number => root.entered(number)
        }
    }
    Component {
        id: linearSlider

        VeskSlider {
            from: root.lowest
            to: root.highest
            stepSize: 0.01
            value: root.number
            Accessible.name: root.label
            onMoved: root.entered(value)
        }
    }
    AdjTextField {
        anchors.top: loader.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.widgetWidth
        height: 20
        name: root.label
        value: root.number
        validator: DoubleValidator {
            bottom: root.lowest
            top: root.highest
            decimals: 2
            notation: DoubleValidator.StandardNotation
            locale: "C"
        }
        onEditingFinished: number => root.entered(number)
    }
}
