import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

/** A button of a dialog's footer; Return works like Space. */
Button {
    id: root

    Layout.fillWidth: true
    Layout.fillHeight: true
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()
}
