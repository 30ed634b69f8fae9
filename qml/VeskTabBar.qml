pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Qt.labs.qmlmodels
import Vesk

/** The open sources, one tab each, under the button that adds one. */
FocusScope {
    id: root

    required property SourceDialogs dialogs

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

            TabBarButton {
                id: addButton

                text: "\uEA12"
                name: qsTr("Add source")
                tipWanted: hovered && !addMenu.visible
                onClicked: addMenu.popup(addButton, 0, addButton.height)

                Menu {
                    id: addMenu

                    width: Theme.contextMenuWidth

                    CameraConnectMenuItem {
                        dialogs: root.dialogs
                    }
                    VeskFileOpenMenuItem {
                        dialogs: root.dialogs
                    }
                }
            }
            TabBarButton {
                text: "\uEC54"
                name: qsTr("Save progress")
                onClicked: App.instance.setNullVeskObject(VeskApp.SaveProgress)
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
            // All tabs are kept, as far as they may be scrolled: their dialogs are open as long as they are there.
            cacheBuffer: 1000000
            model: App.instance.veskObjModel
            ScrollBar.vertical: ScrollBar {}
            Accessible.role: Accessible.PageTabList
            Accessible.name: qsTr("Sources")

            delegate: DelegateChooser {
                role: "type"

                DelegateChoice {
                    roleValue: VeskObject.CameraType

                    CameraTab {
                        required property VeskObject qtObject

                        width: ListView.view?.width ?? 0
                        camera: qtObject as Camera
                    }
                }
                DelegateChoice {
                    roleValue: VeskObject.VeskFileType

                    VeskFileTab {
                        required property VeskObject qtObject

                        width: ListView.view?.width ?? 0
                        veskFile: qtObject as VeskFile
                    }
                }
            }
        }
        FocusFollower {
            flickable: list
        }
    }
}
