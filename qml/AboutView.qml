pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** What the main area shows while no source is selected. */
FocusScope {
    Column {
        anchors.centerIn: parent

        AboutText {
            text: "VESK"
            font.pixelSize: 140
        }
        AboutText {
            text: qsTr("Q4 HIGH-SPEED CAMERA CONTROL")
            font.pixelSize: 20
        }
        AboutText {
            text: qsTr("Version ") + App.instance.applicationVersion
            font.pixelSize: 20
        }
        AboutText {
            id: credits

            function open() {
                Qt.openUrlExternally("file:CREDITS.txt");
            }

            text: qsTr("Credits")
            font.pixelSize: 14
            font.underline: true
            activeFocusOnTab: true
            color: activeFocus ? Theme.palette.highlight : "dimgray"
            Accessible.role: Accessible.Link
            Accessible.onPressAction: open()
            Keys.onSpacePressed: open()
            Keys.onReturnPressed: open()

            HoverHandler {
                cursorShape: Qt.PointingHandCursor
            }
            TapHandler {
                onTapped: credits.open()
            }
        }
    }
}
