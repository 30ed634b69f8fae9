pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** A button of a dialog's footer; Return works like Space. */
VeskButton {
    id: root

    Layout.fillWidth: true
    Layout.fillHeight: true
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()
}
