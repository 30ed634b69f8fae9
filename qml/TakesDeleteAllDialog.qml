pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Asks before all takes of a camera are deleted. */
DialogWindow {
    id: root

    required property Camera camera

    title: "VESK"
    fixedWidth: 200
    fixedHeight: 100

    Label {
        anchors.fill: parent
        anchors.margins: 12
        text: qsTr("Are you sure you want to delete all takes?")
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("OK")
            onClicked: {
                root.camera.deleteAllTakes();
                root.close();
            }
        }
        DialogButton {
            text: qsTr("Cancel")
            focus: true
            onClicked: root.close()
        }
    }
}
