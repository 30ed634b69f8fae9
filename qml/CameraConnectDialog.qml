pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** Connects a camera by its address, or looks for cameras. Stays open, so that several can be added. */
DialogWindow {
    id: root

    function connectCamera() {
        if (addressField.acceptableInput)
            App.instance.connectCamera(addressField.text);
    }

    title: qsTr("Connect Camera")
    fixedWidth: 220
    fixedHeight: 90

    RowLayout {
        anchors.fill: parent
        anchors.margins: Theme.dialogMargin
        spacing: Theme.dialogMargin

        TextField {
            id: addressField

            Layout.fillWidth: true
            Layout.preferredHeight: 30
            focus: true
            placeholderTextColor: Theme.disabledTextColor
            placeholderText: qsTr("IP Address")
            validator: RegularExpressionValidator {
                regularExpression: /^(?:(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\.){3}(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)$/
            }
            Accessible.name: qsTr("IP Address")
            onAccepted: root.connectCamera()
        }
        VeskButton {
            Layout.preferredWidth: 70
            Layout.preferredHeight: 30
            text: qsTr("Connect")
            enabled: addressField.acceptableInput
            onClicked: root.connectCamera()
        }
    }

    footer: DialogFooter {
        DialogButton {
            text: qsTr("Scan for Cameras")
            onClicked: App.instance.startBroadcast()
        }
    }
}
