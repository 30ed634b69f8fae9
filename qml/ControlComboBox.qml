pragma ComponentBehavior: Bound

import Vesk

/** A choice in the value column. */
PlainComboBox {
    anchors.centerIn: parent
    width: parent ? parent.width - 10 : 0
    height: parent?.height ?? 0
}
