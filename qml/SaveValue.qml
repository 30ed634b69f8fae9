import QtQuick
import QtQuick.Layouts
import Vesk

/** A text in the dialog for saving, as wide as there is room. */
ElidedLabel {
    required property string name

    Layout.fillWidth: true
    Layout.preferredHeight: 24
    Layout.columnSpan: 3
    verticalAlignment: Text.AlignVCenter
    Accessible.role: Accessible.StaticText
    Accessible.name: name
    Accessible.description: text
}
