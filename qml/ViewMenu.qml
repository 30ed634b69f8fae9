pragma ComponentBehavior: Bound

import QtQuick.Controls
import Vesk

Menu {
    title: qsTr("&View")

    IconMenuItem {
        text: qsTr("Save Progress")
        iconText: "\uEC54"
        onTriggered: App.instance.setNullVeskObject(VeskApp.SaveProgress)
    }
}
