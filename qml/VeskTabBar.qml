pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** The open sources, one tab each, under the button that adds one. */
FocusScope {
    id: root

    required property DialogLoader connectDialog

    Rectangle {
        id: rule

        width: 1
        height: parent.height
        color: Theme.palette.base
    }
    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: rule.width
        color: Theme.palette.window

        RowLayout {
            id: buttons

            anchors.top: parent.top
            anchors.topMargin: 10
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width - 16
            height: 24
            spacing: 10
            uniformCellSizes: true

            VeskButton {
                id: addButton

                Layout.fillWidth: true
                Layout.fillHeight: true
                text: "\uEA12"
                font.family: Theme.iconFont
                font.pixelSize: 18
                Accessible.name: qsTr("Add source")
                ToolTip.visible: hovered && !addMenu.visible
                ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
                ToolTip.text: qsTr("Add source")
                onClicked: addMenu.popup(addButton, 0, addButton.height)

                Menu {
                    id: addMenu

                    width: Theme.contextMenuWidth

                    CameraConnectMenuItem {
                        connectDialog: root.connectDialog
                    }
                }
            }
        }
        ListView {
            id: list

            anchors.top: buttons.bottom
            anchors.topMargin: 10
            anchors.bottom: parent.bottom
            width: parent.width
            clip: true
            spacing: 8
            boundsBehavior: Flickable.StopAtBounds
            flickDeceleration: Theme.flickDeceleration
            model: App.instance.veskObjModel
            ScrollBar.vertical: ScrollBar {}
            Accessible.role: Accessible.PageTabList
            Accessible.name: qsTr("Sources")

            delegate: CameraTab {
                required property VeskObject qtObject

                width: ListView.view?.width ?? 0
                camera: qtObject as Camera
            }
        }
        FocusFollower {
            flickable: list
        }
    }
}
