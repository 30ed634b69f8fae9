pragma ComponentBehavior: Bound

import QtQuick

Text {
    anchors.horizontalCenter: parent?.horizontalCenter
    color: "dimgray"
    style: Text.Sunken
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
