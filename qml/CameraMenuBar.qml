pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a camera is selected. */
VeskMenuBar {
    id: root

    required property Camera camera
    required property SourceDialogs dialogs
    required property DialogLoader deleteAllDialog
    required property SsdTakeOpenLoader ssdTakeOpenDialog

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            dialogs: root.dialogs
        }
        VeskFileOpenMenuItem {
            dialogs: root.dialogs
        }
        MenuSeparator {}
        SsdTakeOpenMenuItem {
            camera: root.camera
            dialog: root.ssdTakeOpenDialog
        }
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
