pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** White balance of a colour source. */
ControlGrid {
    id: root

    required property VeskObject source
    readonly property ImgAdjModel imgAdjModel: source?.imgAdjModel ?? null

    ControlRow {
        label: qsTr("White Balance")
    }
    ColorAdjRow {
        label: qsTr("Red")
        adjValue: root.imgAdjModel?.wbR ?? null
    }
    ColorAdjRow {
        label: qsTr("Green")
        adjValue: root.imgAdjModel?.wbG ?? null
    }
    ColorAdjRow {
        label: qsTr("Blue")
        adjValue: root.imgAdjModel?.wbB ?? null
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
