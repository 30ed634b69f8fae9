pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** Divides the frame memory. Closes by itself once the camera takes no new division. */
DialogWindow {
    id: root

    required property Camera camera
    readonly property int acqState: camera.acqState.value ?? 0
    readonly property bool prtnOK: camera.savedTakes.count === 0 && (acqState === 1 || acqState === 2 || acqState === 6)

    function accept() {
        if (!countField.acceptableInput || !root.prtnOK)
            return;
        root.camera.partition(Number(countField.text));
        root.close();
    }

    title: qsTr("Partition")
    fixedWidth: 175
    fixedHeight: 100
    onPrtnOKChanged: {
        if (!root.prtnOK)
            root.close();
    }
    Component.onCompleted: countField.text = root.camera.prtnCnt.value ?? ""

    RowLayout {
        anchors.fill: parent
        anchors.margins: Theme.dialogMargin

        Label {
            Layout.fillWidth: true
            text: qsTr("Partition Count:")
        }
        TextField {
            id: countField

            Layout.preferredWidth: 50
            focus: true
            horizontalAlignment: TextInput.AlignRight
            validator: IntValidator {
                locale: "C"
                bottom: 1
                top: 1024
            }
            Accessible.name: qsTr("Partition Count")
            onAccepted: root.accept()
        }
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("OK")
            enabled: root.prtnOK && countField.acceptableInput
            onClicked: root.accept()
        }
    }
}
