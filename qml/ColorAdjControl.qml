pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** White balance of a colour source. */
ControlGrid {
    id: root

    required property VeskObject source
    readonly property ImgAdjModel imgAdjModel: source.imgAdjModel

    ControlRow {
        label: qsTr("White Balance")
    }
    ColorAdjRow {
        label: qsTr("Red")
        adjValue: root.imgAdjModel.wbR
    }
    ColorAdjRow {
        label: qsTr("Green")
        adjValue: root.imgAdjModel.wbG
    }
    ColorAdjRow {
        label: qsTr("Blue")
        adjValue: root.imgAdjModel.wbB
    }
    ControlRow {
        rowHeight: 4
    }
    ControlRow {
        rowHeight: Theme.buttonHeight

        ControlButton {
            text: qsTr("Auto White Balance")
            onClicked: root.source.autoWhiteBalance()
        }
    }
}
