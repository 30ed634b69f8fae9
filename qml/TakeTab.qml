pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The tab of one take, below that of its camera. Its take is null for a moment when it has been removed. */
TakeTabBox {
    id: root

    required property Take take

    iconText: root.take?.locked ? "\uF0B3" : "\uEB8F"
    iconColor: root.take?.locked ? Theme.palette.highlight : "white"
    label: qsTr("Take %1").arg(root.take?.takeId ?? "")
    selected: root.take?.selected ?? false
    menu: menu
    onChosen: App.instance.selectedVeskObject = root.take

    Menu {
        id: menu

        width: Theme.contextMenuWidth

        SaveMenuItem {
            dialog: saveDialog
        }
        TakeDeleteMenuItem {
            deletion: deletion
        }
    }
    SaveDialogLoader {
        id: saveDialog

        source: root.take
    }
    TakeDeletion {
        id: deletion

        take: root.take
    }
}
