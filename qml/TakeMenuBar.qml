pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while a take is selected. */
VeskMenuBar {
    id: root

    required property DialogLoader connectDialog
    required property TakeDeletion deletion

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            connectDialog: root.connectDialog
        }
        MenuSeparator {}
        TakeDeleteMenuItem {
            deletion: root.deletion
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    HelpMenu {}
}
