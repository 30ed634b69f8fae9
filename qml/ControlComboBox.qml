import QtQuick
import QtQuick.Controls

/** A choice in the value column; gives up focus when it is made. */
ComboBox {
    id: root

    anchors.centerIn: parent
    width: parent ? parent.width - 10 : 0
    height: parent?.height ?? 0
    focusPolicy: Qt.TabFocus
    onActivated: root.focus = false
}
