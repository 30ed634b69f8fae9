pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a take is selected. */
VeskMenuBar {
    id: root

    required property DialogLoader connectDialog
    required property SaveDialogLoader saveDialog
    required property TakeDeletion deletion

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            connectDialog: root.connectDialog
        }
        MenuSeparator {}
        SaveMenuItem {
            dialog: root.saveDialog
        }
        TakeDeleteMenuItem {
            deletion: root.deletion
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    ViewMenu {}
    HelpMenu {}
}
