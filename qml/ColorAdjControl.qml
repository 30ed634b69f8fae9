pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
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

        Button {
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width - 10
            height: parent.height
            focusPolicy: Qt.TabFocus
            text: qsTr("Auto White Balance")
            onClicked: {
                focus = false;
                root.source.autoWhiteBalance();
            }
        }
    }
}
