import QtQuick
import QtQuick.Controls

/** Menu item that takes no room while it makes no sense. */
MenuItem {
    property bool shown: true

    visible: shown
    Accessible.name: text
    height: shown ? implicitHeight : 0
}
