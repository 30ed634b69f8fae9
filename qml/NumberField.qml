pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** A number with its unit, to be read and typed. */
UnitsTextField {
    id: root

    required property string name
    required property string shown

    signal entered(real number)

    horizontalAlignment: TextInput.AlignRight
    hoverEnabled: true
    Accessible.name: root.name
    ToolTip.visible: root.hovered && !root.activeFocus
    ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
    ToolTip.text: root.name
    Keys.forwardTo: [edit]

    FieldEdit {
        id: edit

        field: root
        shown: root.shown
        onEntered: number => root.entered(number)
    }
}
