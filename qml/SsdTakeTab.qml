pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/**
 * The tab of one opened recording on a camera's drive, below that of the camera. Its take is null for a moment
 * when it has been removed.
 */
TakeTabBox {
    id: root

    required property SsdTake ssdTake

    iconText: "\uECC5"
    label: App.instance.fileNameFromPath(root.ssdTake?.name ?? "")
    selected: root.ssdTake?.selected ?? false
    menu: menu
    onChosen: App.instance.selectedVeskObject = root.ssdTake

    Menu {
        id: menu

        width: Theme.contextMenuWidth

        SaveMenuItem {
            dialog: saveDialog
        }
        SsdTakeCloseMenuItem {
            ssdTake: root.ssdTake
        }
    }
    SaveDialogLoader {
        id: saveDialog

        source: root.ssdTake
    }
}
