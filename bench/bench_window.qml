import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

ApplicationWindow {
    width: 1280
    height: 720
    visible: true
    menuBar: MenuBar {
        Menu {
            title: "File"
            MenuItem { text: "Exit" }
        }
        Menu { title: "View" }
        Menu { title: "Help" }
    }
    RowLayout {
        anchors.fill: parent
        Label { text: "window" }
        Button { text: "button" }
        ListView { Layout.fillWidth: true }
    }
}
