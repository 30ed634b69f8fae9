pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Turning and flipping the picture, the overlays and the histogram. */
ControlGrid {
    id: root

    required property VeskObject source
    readonly property ImgAdjModel imgAdjModel: source?.imgAdjModel ?? null
    readonly property int rotation90: imgAdjModel?.rotate ?? 0

    function rotateTo(angle) {
        root.imgAdjModel.rotate = root.rotation90 === angle ? 0 : angle;
    }

    ControlRow {
        id: transformRow

        label: qsTr("Transform")
        rowHeight: 24

        Row {
            id: transformButtons

            readonly property real buttonWidth: (width - 3 * spacing) / 4

            anchors.horizontalCenter: parent.horizontalCenter
            width: transformRow.widgetWidth
            height: parent.height
            spacing: 2

            TransformButton {
                width: transformButtons.buttonWidth
                iconText: "\uF4D6"
                name: qsTr("Flip horizontally")
                active: !!root.imgAdjModel?.flipH
                onChosen: root.imgAdjModel.flipH = !root.imgAdjModel.flipH
            }
            TransformButton {
                width: transformButtons.buttonWidth
                iconText: "\uF4DA"
                name: qsTr("Flip vertically")
                active: !!root.imgAdjModel?.flipV
                onChosen: root.imgAdjModel.flipV = !root.imgAdjModel.flipV
            }
            TransformButton {
                width: transformButtons.buttonWidth
                iconText: "\uEB95"
                name: qsTr("Rotate by 90 degrees")
                active: root.rotation90 === 90
                onChosen: root.rotateTo(90)
            }
            TransformButton {
                width: transformButtons.buttonWidth
                iconText: "\uEA3C"
                name: qsTr("Rotate by 270 degrees")
                active: root.rotation90 === 270
                onChosen: root.rotateTo(270)
            }
        }
    }
    ControlRow {
        rowHeight: 8
    }
    ControlRow {
        label: qsTr("Focus Peaking")
        rowHeight: Theme.buttonHeight

        ControlComboBox {
            model: [qsTr("Disabled"), qsTr("Low"), qsTr("Medium"), qsTr("High")]
            currentIndex: root.imgAdjModel?.focusPeak ?? 0
            Accessible.name: qsTr("Focus Peaking")
            onActivated: index => root.imgAdjModel.focusPeak = index
        }
    }
    ControlRow {
        label: qsTr("Exposure Assist")
        rowHeight: Theme.buttonHeight

        ControlComboBox {
            model: [qsTr("Disabled"), qsTr("Enabled")]
            currentIndex: root.imgAdjModel?.expAssist ?? 0
            Accessible.name: qsTr("Exposure Assist")
            onActivated: index => root.imgAdjModel.expAssist = index
        }
    }
    ControlRow {
        rowHeight: 8
    }
    ControlRow {
        label: qsTr("Histogram")
        rowHeight: 64

        HistogramControl {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 128
            height: 64
            histogram: root.source?.histogram ?? null
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Histogram")
        }
    }
}
