pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Fusion.impl

/** Menu item that is one choice of several. */
MenuItem {
    id: root

    checkable: true
    autoExclusive: true
    Accessible.name: text

    indicator: RadioIndicator {
        x: root.leftPadding
        y: root.topPadding + (root.availableHeight - height) / 2
        control: root
        visible: root.checkable
    }
}
