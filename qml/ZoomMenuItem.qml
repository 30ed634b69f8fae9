pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Menu item that takes no room while it makes no sense. */
MenuItem {
    property bool shown: true

    visible: shown
    // The arrow keys step over a disabled item, but not over one that is only out of sight.
    enabled: shown
    Accessible.name: text
    height: shown ? implicitHeight : 0
}
