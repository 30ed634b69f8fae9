pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** One glyph of the icon font, centred. Whoever shows it carries the accessible name. */
Text {
    color: "white"
    font.family: Theme.iconFont
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    Accessible.ignored: true
}
