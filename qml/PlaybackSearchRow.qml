pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Tells which frame a search examines, and cancels it. */
Row {
    id: root

    required property ImgSearch imgSearch

    spacing: 6

    Label {
        height: parent.height
        text: qsTr("Searching frame: ") + (root.imgSearch?.fr ?? 0)
        color: "white"
        font.letterSpacing: -0.5
        font.features: { "tnum": 1 }
        verticalAlignment: Text.AlignVCenter
    }
    IconButton {
        width: 18
        height: parent.height
        iconText: "\uEB98"
        name: qsTr("Cancel the search")
        iconSize: 18
        hoverSize: 22
        focusPolicy: Qt.StrongFocus
        onClicked: root.imgSearch.cancel()
    }
}
