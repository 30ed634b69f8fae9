import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

/** The label of a value in the dialog for saving. */
Label {
    Layout.preferredWidth: 85
    Layout.preferredHeight: 24
    verticalAlignment: Text.AlignVCenter
    Accessible.ignored: true
}
