pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Menu bar whose entries can be read aloud: their names are without the mark of the short-cut key. */
MenuBar {
    delegate: MenuBarItem {
        Accessible.role: Accessible.MenuItem
        Accessible.name: text.replace("&", "")
    }
}
