pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One button of the playback transport. A click ends the edit of a field, so that the keys play again. */
PressButton {
    width: (parent?.width ?? 0) / 5
    height: parent?.height ?? 0
    iconSize: 24
    hoverSize: 28
    focusPolicy: Qt.StrongFocus
}
