pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while an opened recording of a camera's drive is selected. */
VeskMenuBar {
    id: root

    required property SsdTake ssdTake
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
        SsdTakeCloseMenuItem {
            ssdTake: root.ssdTake
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    ViewMenu {}
    HelpMenu {}
}
