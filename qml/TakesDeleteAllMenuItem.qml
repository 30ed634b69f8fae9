pragma ComponentBehavior: Bound

import Vesk

/** Deletes all takes of a camera, after a question unless the warning is off. */
IconMenuItem {
    id: root

    required property Camera camera
    required property DialogLoader deleteAllDialog
    /** No view sets this key; it is for those who edit the settings by hand. */
    readonly property bool warningOff: App.instance.setting("vesk/disable_take_delete_warn", false)

    text: root.warningOff ? qsTr("Delete All Takes") : qsTr("Delete All Takes...")
    iconText: "\uEC2A"
    onTriggered: {
        if (root.warningOff)
            root.camera.deleteAllTakes();
        else
            root.deleteAllDialog.open();
    }
}
