pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Moves the focus of a lens, far in the upper row and near in the lower one; acts on press. */
Grid {
    id: root

    readonly property var steps: [
        { glyph: "\uEA78", step: 1, name: qsTr("Focus 1 step farther") },
        { glyph: "\uF2EB", step: 10, name: qsTr("Focus 10 steps farther") },
        { glyph: "\uF550", step: 100, name: qsTr("Focus 100 steps farther") },
        { glyph: "\uF3B8", step: 32767, name: qsTr("Focus to infinity") },
        { glyph: "\uEA4E", step: -1, name: qsTr("Focus 1 step nearer") },
        { glyph: "\uF2E1", step: -10, name: qsTr("Focus 10 steps nearer") },
        { glyph: "\uF54F", step: -100, name: qsTr("Focus 100 steps nearer") },
        { glyph: "0", step: 0, name: qsTr("Focus to the nearest distance") }
    ]

    /** The user asks for a number of steps. */
    signal stepped(int step)

    columns: 4
    spacing: 2

    Repeater {
        model: root.steps

        VeskButton {
            required property var modelData

            width: (root.width - 3 * root.spacing) / 4
            height: (root.height - root.spacing) / 2
            padding: 0
            text: modelData.glyph
            font.family: modelData.step === 0 ? "Inter" : Theme.iconFont
            Accessible.name: modelData.name
            Accessible.onPressAction: root.stepped(modelData.step)
            ToolTip.visible: hovered
            ToolTip.delay: Application.styleHints.mousePressAndHoldInterval
            ToolTip.text: modelData.name
            onPressed: root.stepped(modelData.step)
        }
    }
}
