pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

Menu {
    title: qsTr("&Help")

    IconMenuItem {
        text: qsTr("About VESK")
        iconText: "\uEE59"
        onTriggered: App.instance.setNullVeskObject(VeskApp.Empty)
    }
}
