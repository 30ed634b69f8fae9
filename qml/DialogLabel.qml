import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** The label of a row of a larger dialog. */
Label {
    Layout.preferredWidth: 64
    Layout.preferredHeight: Theme.dialogRowHeight
    verticalAlignment: Text.AlignVCenter
}
