pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Slider over 0.1 to 10 on a logarithmic scale. */
VeskSlider {
    id: root

    required property string name
    /** The number shown; it is not written here. */
    required property real number

    readonly property real low: Math.log(0.1)
    readonly property real high: Math.log(10)

    /** The user moved the slider to a number. */
    signal numberMoved(real number)

    function numberAt(position) {
        return Math.exp(root.low + (root.high - root.low) * position);
    }

    function positionOf(value) {
        return value > 0 ? (Math.log(value) - root.low) / (root.high - root.low) : 0;
    }

    from: 0
    to: 1
    stepSize: 0.01
    value: positionOf(number)
    Accessible.name: root.name
    onMoved: root.numberMoved(root.numberAt(root.value))
}
