pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The tab of one take, below that of its camera. Its take is null for a moment when it has been removed. */
TabBox {
    id: root

    required property Take take

    height: 28
    name: label.text
    selected: root.take?.selected ?? false
    menu: menu
    onChosen: App.instance.selectedVeskObject = root.take

    Icon {
        id: icon

        x: 5
        width: 50
        height: parent.height
        text: root.take?.locked ? "\uF0B3" : "\uEB8F"
        font.pixelSize: 16
        color: root.take?.locked ? Theme.palette.highlight : "white"
    }
    Text {
        id: label

        anchors.left: icon.right
        height: parent.height
        text: qsTr("Take %1").arg(root.take?.takeId ?? "")
        color: "white"
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
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
