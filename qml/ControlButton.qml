pragma ComponentBehavior: Bound

import Vesk

/** A button that fills the value column. */
VeskButton {
    anchors.horizontalCenter: parent?.horizontalCenter
    width: parent ? parent.width - 10 : 0
    height: parent?.height ?? 0
}
