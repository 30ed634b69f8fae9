pragma Singleton
pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The listings of drives that are open: one a camera at the most, however many ways there are to open it. */
QtObject {
    id: root

    /** Objects with a camera and a dialog each. */
    property var open: []

    function add(camera: Camera, dialog: DialogWindow) {
        root.open.push({ camera: camera, dialog: dialog });
    }

    function remove(dialog: DialogWindow) {
        root.open = root.open.filter(other => other.dialog !== dialog);
    }

    /** Null if there is none. */
    function of(camera: Camera): DialogWindow {
        return root.open.find(other => other.camera === camera)?.dialog ?? null;
    }
}
