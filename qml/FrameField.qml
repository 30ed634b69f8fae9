pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The number of a frame, to be read and typed. */
FlatTextField {
    id: root

    required property string name
    /** As text; a frame number may be anywhere on the 64-bit scale. */
    required property string shown

    signal entered(real fr)

    litColor: Theme.boxColor
    font.letterSpacing: -0.5
    font.features: { "tnum": 1 }
    validator: RegularExpressionValidator {
        regularExpression: /-?\d{0,13}/
    }
    Accessible.name: root.name
    ToolTip.visible: root.hovered && !root.activeFocus
    ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
    ToolTip.text: root.name
    Keys.forwardTo: [edit]

    FieldEdit {
        id: edit

        field: root
        returnTakes: true
        shown: root.shown
        onEntered: number => root.entered(number)
    }
}
