pragma ComponentBehavior: Bound

import QtQuick
import Vesk

IconMenuItem {
    text: qsTr("Exit")
    iconText: "\uF4C7"
    onTriggered: Qt.quit()
}
