pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a take is selected. */
VeskMenuBar {
    id: root

    required property SourceDialogs dialogs
    required property SaveDialogLoader saveDialog
    required property TakeDeletion deletion

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            dialogs: root.dialogs
        }
        VeskFileOpenMenuItem {
            dialogs: root.dialogs
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
