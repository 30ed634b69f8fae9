pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** How far and how fast a source plays. */
GridLayout {
    id: root

    required property PlaybackVeskObject source
    readonly property int playStep: source?.playStep ?? 1
    readonly property real playFrRate: source?.playFrRate ?? 0

    columns: 2
    columnSpacing: 10
    rowSpacing: 10

    Icon {
        text: "\uF318"
        font.pixelSize: 18
    }
    NumberField {
        Layout.fillWidth: true
        name: qsTr("Play step")
        shown: String(root.playStep)
        units: root.playStep > 1 ? qsTr("frames") : qsTr("frame")
        validator: RegularExpressionValidator {
            regularExpression: /\d{0,8}/
        }
        onEntered: number => root.source.playStep = number
    }
    Icon {
        text: "\uF371"
        font.pixelSize: 18
    }
    NumberField {
        Layout.fillWidth: true
        name: qsTr("Play rate")
        shown: String(Number(root.playFrRate.toFixed(2)))
        units: qsTr("fps")
        validator: RegularExpressionValidator {
            regularExpression: /(\d{0,8})([.]\d{0,3})?$/
        }
        onEntered: number => root.source.playFrRate = number
    }
    VeskSlider {
        Layout.column: 1
        Layout.row: 2
        Layout.fillWidth: true
        from: 1
        to: 240
        stepSize: 1
        value: root.playFrRate
        focusPolicy: Qt.StrongFocus
        Accessible.name: qsTr("Play rate")
        onMoved: root.source.playFrRate = value
    }
}
