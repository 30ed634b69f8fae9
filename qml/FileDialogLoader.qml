pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Dialogs

/** Holds a dialog for files while it is open: open() builds and shows it, any answer to it destroys it. */
Loader {
    id: root

    readonly property FileDialog dialog: item as FileDialog

    function open() {
        root.active = true;
    }

    active: false
    visible: false
    onLoaded: {
        root.dialog.parentWindow = root.Window.window;
        root.dialog.open();
    }

    Connections {
        target: root.dialog

        function onAccepted() {
            root.active = false;
        }
        function onRejected() {
            root.active = false;
        }
    }
}
