pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a camera is selected. */
VeskMenuBar {
    id: root

    required property Camera camera
    required property SourceDialogs dialogs
    required property DialogLoader deleteAllDialog

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            dialogs: root.dialogs
        }
        VeskFileOpenMenuItem {
            dialogs: root.dialogs
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
