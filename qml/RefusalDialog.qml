pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Tells why something was not done. */
DialogWindow {
    id: root

    required property string message

    title: "VESK"

    Label {
        anchors.fill: parent
        anchors.margins: 12
        text: root.message
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("OK")
            focus: true
            onClicked: root.close()
        }
    }
}
