pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Push button whose text is dimmed while it is disabled. It gives up focus after use. */
Button {
    id: root

    focusPolicy: Qt.TabFocus
    palette.disabled.buttonText: Theme.dimButtonColor
    Accessible.name: root.text
    onReleased: root.focus = false
    onCanceled: root.focus = false
}
