pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

/** The menus while no source is selected. */
VeskMenuBar {
    id: root

    required property DialogLoader connectDialog

    Menu {
        title: qsTr("&File")

        CameraConnectMenuItem {
            connectDialog: root.connectDialog
        }
        MenuSeparator {}
        ExitMenuItem {}
    }
    ViewMenu {}
    HelpMenu {}
}
