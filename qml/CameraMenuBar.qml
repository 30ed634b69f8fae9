pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a camera is selected. */
VeskMenuBar {
    id: root

    required property Camera camera
    required property DialogLoader connectDialog
    required property DialogLoader deleteAllDialog

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            connectDialog: root.connectDialog
        }
        MenuSeparator {}
        TakesDeleteAllMenuItem {
            camera: root.camera
            deleteAllDialog: root.deleteAllDialog
        }
        CameraDisconnectMenuItem {
            camera: root.camera
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    ViewMenu {}
    HelpMenu {}
}
