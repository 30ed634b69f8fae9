pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Offset, gain, gamma and contrast of a source, for all channels or one. */
ControlGrid {
    id: root

    required property VeskObject source
    readonly property ImgAdjModel imgAdjModel: source?.imgAdjModel ?? null
    readonly property bool monochrome: (imgAdjModel?.cfa.value ?? 0) === 0
    property int pickedChannel: 0
    readonly property int channel: monochrome ? 0 : pickedChannel
    readonly property list<int> resetBits: [Util.R | Util.G | Util.B, Util.R, Util.G, Util.B]

    ComboRow {
        label: qsTr("Channel")
        model: root.monochrome ? [qsTr("Monochrome")] : [qsTr("RGB"), qsTr("Red"), qsTr("Green"), qsTr("Blue")]
        currentIndex: root.channel
        choosable: !root.monochrome
        onChosen: index => root.pickedChannel = index
    }
    ImgAdjRow {
        label: qsTr("Offset")
        channel: root.channel
        red: root.imgAdjModel?.offsetR ?? null
        common: root.imgAdjModel?.offset ?? null
        blue: root.imgAdjModel?.offsetB ?? null
    }
    ImgAdjRow {
        label: qsTr("Gain")
        logarithmic: true
        channel: root.channel
        red: root.imgAdjModel?.gainR ?? null
        common: root.imgAdjModel?.gain ?? null
        blue: root.imgAdjModel?.gainB ?? null
    }
    ImgAdjRow {
        label: qsTr("Gamma")
        logarithmic: true
        channel: root.channel
        red: root.imgAdjModel?.gammaR ?? null
        common: root.imgAdjModel?.gamma ?? null
        blue: root.imgAdjModel?.gammaB ?? null
    }
    ImgAdjRow {
        label: qsTr("Contrast")
        channel: root.channel
        red: root.imgAdjModel?.contrastR ?? null
        common: root.imgAdjModel?.contrast ?? null
        blue: root.imgAdjModel?.contrastB ?? null
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: qsTr("Reset")
            onClicked: root.imgAdjModel.reset(root.resetBits[root.channel])
        }
    }
}
