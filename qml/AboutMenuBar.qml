pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while no source is selected. */
VeskMenuBar {
    id: root

    required property SourceDialogs dialogs

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            dialogs: root.dialogs
        }
        VeskFileOpenMenuItem {
            dialogs: root.dialogs
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    ViewMenu {}
    HelpMenu {}
}
