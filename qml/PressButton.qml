pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Icon button that acts at once, on press. */
IconButton {
    id: root

    signal chosen

    Accessible.onPressAction: root.chosen()
    onPressed: root.chosen()
}
