pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** A dialog of fixed size; Escape closes it. */
ApplicationWindow {
    id: root

    required property int fixedWidth
    required property int fixedHeight

    flags: Qt.Dialog
    width: fixedWidth
    height: fixedHeight
    minimumWidth: fixedWidth
    minimumHeight: fixedHeight
    maximumWidth: fixedWidth
    maximumHeight: fixedHeight

    Shortcut {
        sequences: [StandardKey.Cancel]
        onActivated: root.close()
    }
}
