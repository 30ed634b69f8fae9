pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The section of one electrical line. */
CollapsiblePane {
    id: root

    required property Camera camera
    required property CameraIO qtObject
    readonly property string settingsKey: qtObject.token + "_pane_expanded"

    label: qtObject.name
    expanded: false
    content: CameraIOControl {
        camera: root.camera
        io: root.qtObject
    }
}
