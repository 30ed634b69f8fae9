pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Text cut at its right end; a tooltip tells the whole text when it is cut. */
Label {
    id: root

    elide: Text.ElideRight
    textFormat: Text.PlainText
    ToolTip.visible: root.truncated && hover.hovered
    ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
    ToolTip.text: root.text

    HoverHandler {
        id: hover
    }
}
