pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** How the search for a change of the picture looks for it. Nothing of it can be changed while it runs. */
ControlGrid {
    id: root

    required property PlaybackVeskObject source
    readonly property ImgSearch imgSearch: source?.imgSearch ?? null
    readonly property bool idle: imgSearch?.state === ImgSearch.Idle

    ComboRow {
        label: qsTr("Reference Frame")
        model: [qsTr("Previous Frame"), qsTr("Start Frame")]
        currentIndex: root.imgSearch?.refFrame ?? ImgSearch.PreviousFrame
        choosable: root.idle
        onChosen: index => root.imgSearch.refFrame = index
    }
    ControlRow {
        id: stepRow

        label: qsTr("Frame Step")
        rowHeight: Theme.buttonHeight

        VeskSpinBox {
            anchors.centerIn: parent
            width: stepRow.widgetWidth
            height: parent.height - 4
            from: 1
            to: 2147483647
            value: root.imgSearch?.step ?? 1
            enabled: root.idle
            textFromValue: value => String(value)
            Accessible.name: stepRow.label
            onValueModified: root.imgSearch.step = value
        }
    }
    AdjustmentRow {
        label: qsTr("Threshold")
        lowest: 0.01
        highest: 0.99
        enabled: root.idle
        number: root.imgSearch?.threshold ?? 0.5
        onEntered: number => root.imgSearch.threshold = number
    }
}
