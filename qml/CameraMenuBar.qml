pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a camera is selected. */
VeskMenuBar {
    id: root

    required property Camera camera
    required property DialogLoader connectDialog

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            connectDialog: root.connectDialog
        }
        MenuSeparator {}
        CameraDisconnectMenuItem {
            camera: root.camera
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    HelpMenu {}
}
