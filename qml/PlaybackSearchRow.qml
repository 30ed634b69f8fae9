pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Tells which frame a search examines, and cancels it. */
Row {
    id: root

    required property PlaybackVeskObject source
    readonly property ImgSearch imgSearch: source?.imgSearch ?? null

    function textOf(fr) {
        return qsTr("Searching frame: ") + (fr ?? 0);
    }

    spacing: 6

    // As wide as its longest text, so that the button beside it stays where it is.
    TextMetrics {
        id: firstText

        font: label.font
        text: root.textOf(root.source?.aFr)
    }
    TextMetrics {
        id: lastText

        font: label.font
        text: root.textOf(root.source?.bFr)
    }
    Label {
        id: label

        width: Math.ceil(Math.max(implicitWidth, firstText.advanceWidth, lastText.advanceWidth))
        height: parent.height
        text: root.textOf(root.imgSearch?.fr)
        color: "white"
        horizontalAlignment: Text.AlignRight
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
