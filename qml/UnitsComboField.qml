pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T
import Vesk

/** The field of a UnitsComboBox. */
FocusScope {
    id: root

    required property ComboBox box
    required property string prefix
    required property string units
    required property string name
    readonly property alias field: field
    readonly property int textPadding: 4 - box.padding

    /** The user has changed the text. */
    signal edited

    implicitWidth: field.implicitWidth
    implicitHeight: field.implicitHeight

    T.TextField {
        id: field

        anchors.fill: parent
        focus: true
        implicitWidth: contentWidth + leftPadding + rightPadding
        implicitHeight: contentHeight + topPadding + bottomPadding
        topPadding: 4
        bottomPadding: 4
        leftPadding: root.textPadding + prefixLabel.width
        rightPadding: 4 + unitsLabel.width
        text: root.box.editable ? root.box.editText : root.box.displayText
        font: root.box.font
        enabled: root.box.editable
        autoScroll: root.box.editable
        readOnly: root.box.down
        inputMethodHints: root.box.inputMethodHints
        validator: root.box.validator
        selectByMouse: root.box.selectTextByMouse
        color: !root.box.enabled ? Theme.disabledTextColor
            : root.box.editable ? root.box.palette.text : root.box.palette.buttonText
        selectionColor: root.box.palette.highlight
        selectedTextColor: root.box.palette.highlightedText
        verticalAlignment: Text.AlignVCenter
        Accessible.name: root.name
        onTextEdited: root.edited()
        onActiveFocusChanged: {
            if (!activeFocus && root.box.editable)
                root.box.accepted();
        }
        // Also for a text that the validator does not take: it is refused now, and not when the focus goes.
        Keys.onReturnPressed: root.box.accepted()
        Keys.onEnterPressed: root.box.accepted()

        background: Rectangle {
            radius: 2
            color: root.box.palette.base
            border.color: field.activeFocus ? root.box.palette.highlight : "transparent"
            visible: root.box.editable && !root.box.flat
        }

        Label {
            id: prefixLabel

            x: root.textPadding
            height: field.height
            text: root.prefix
            color: field.color
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
        Label {
            id: unitsLabel

            x: field.width - width - 4
            height: field.height
            text: root.units
            color: field.color
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }
}
