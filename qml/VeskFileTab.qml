pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The tab of one native file. Its file is null for a moment when it has just been closed. */
Item {
    id: root

    required property VeskFile veskFile

    implicitHeight: box.height
    z: box.selected ? 1 : 0

    SourceTabBox {
        id: box

        iconText: "\uECC5"
        label: App.instance.fileNameFromPath(root.veskFile?.fileName ?? "")
        selected: root.veskFile?.selected ?? false
        menu: menu
        onChosen: App.instance.selectedVeskObject = root.veskFile

        Menu {
            id: menu

            width: Theme.contextMenuWidth

            SaveMenuItem {
                dialog: saveDialog
            }
            VeskFileCloseMenuItem {
                veskFile: root.veskFile
            }
        }
    }
    SaveDialogLoader {
        id: saveDialog

        source: root.veskFile
    }
}
