pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a native file is selected. */
VeskMenuBar {
    id: root

    required property VeskFile veskFile
    required property SourceDialogs dialogs
    required property SaveDialogLoader saveDialog

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
        VeskFileCloseMenuItem {
            veskFile: root.veskFile
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    ViewMenu {}
    HelpMenu {}
}
