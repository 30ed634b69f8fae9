pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** The number of a frame at one end of the range that is saved. */
TextField {
    id: root

    required property string name

    Layout.preferredWidth: 110
    Layout.preferredHeight: 24
    Layout.columnSpan: 3
    horizontalAlignment: TextInput.AlignRight
    color: enabled ? palette.text : Theme.disabledTextColor
    font.features: { "tnum": 1 }
    validator: RegularExpressionValidator {
        regularExpression: /-?\d{0,13}/
    }
    Accessible.name: root.name
    onActiveFocusChanged: {
        if (activeFocus)
            selectAll();
    }
}
