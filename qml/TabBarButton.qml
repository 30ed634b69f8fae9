pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** One of the buttons above the tabs: a glyph, whose name shows as a tooltip. */
VeskButton {
    id: root

    required property string name
    property bool tipWanted: hovered

    Layout.fillWidth: true
    Layout.fillHeight: true
    font.family: Theme.iconFont
    font.pixelSize: 18
    Accessible.name: root.name
    ToolTip.visible: root.tipWanted
    ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
    ToolTip.text: root.name
}
