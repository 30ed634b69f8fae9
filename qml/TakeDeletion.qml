pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The way to the deletion of a take: asks first, or tells why the take has to stay. */
Item {
    id: root

    required property Take take
    /** No view sets this key; it is for those who edit the settings by hand. */
    readonly property bool warningOff: App.instance.setting("vesk/disable_take_delete_warn", false)

    function start() {
        if (!root.warningOff)
            (root.take.locked ? lockedDialog : deleteDialog).open();
        else if (!root.take.locked)
            root.take.deleteTake();
    }

    /** A question about a take is not to be answered for another one. */
    function drop() {
        deleteDialog.active = false;
        lockedDialog.active = false;
    }

    visible: false

    DialogLoader {
        id: deleteDialog

        sourceComponent: TakeDeleteDialog {
            take: root.take
        }
    }
    DialogLoader {
        id: lockedDialog

        sourceComponent: TakeLockedDialog {
            take: root.take
        }
    }
}
