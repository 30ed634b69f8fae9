pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Icon button that is lit while its transform is on. */
IconButton {
    id: root

    property bool active: false

    /** Acts at once, on press. */
    signal chosen

    height: parent?.height ?? 0
    iconSize: 20
    hoverSize: 24
    iconColor: active ? palette.highlight : "white"
    Accessible.checkable: true
    Accessible.checked: active
    Accessible.onPressAction: root.chosen()
    Accessible.onToggleAction: root.chosen()
    onPressed: root.chosen()
}
