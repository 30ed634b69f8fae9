pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Asks before something that cannot be undone. */
DialogWindow {
    id: root

    required property string question

    /** The user wants it. */
    signal confirmed

    title: "VESK"
    fixedWidth: 200
    fixedHeight: 100

    Label {
        anchors.fill: parent
        anchors.margins: 12
        text: root.question
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("OK")
            onClicked: {
                root.confirmed();
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
