pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Holds a dialog while it is open: open() builds and shows it, closing it destroys it. */
Loader {
    id: root

    readonly property DialogWindow dialog: item as DialogWindow

    function open() {
        root.active = true;
        root.dialog.requestActivate();
    }

    active: false
    visible: false
    onLoaded: {
        root.dialog.transientParent = root.Window.window;
        root.dialog.show();
    }

    Connections {
        target: root.dialog

        function onClosing() {
            root.active = false;
        }
    }
}
