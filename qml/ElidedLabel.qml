pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Text cut at its right end; a tooltip tells the whole text when it is cut. */
Label {
    id: root

    /** A tooltip takes what looks like markup for that. */
    function shown(text: string): string {
        if (!text.includes("<"))
            return text;
        const plain = text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");
        return "<span>" + plain + "</span>";
    }

    elide: Text.ElideRight
    textFormat: Text.PlainText
    ToolTip.visible: root.truncated && hover.hovered
    ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
    ToolTip.text: root.shown(root.text)

    HoverHandler {
        id: hover
    }
}
