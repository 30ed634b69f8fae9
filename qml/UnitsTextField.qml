pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Text field with its unit inside, at the right. */
TextField {
    id: root

    required property string units

    rightPadding: 4 + unitsLabel.width + underscore.advanceWidth
    onActiveFocusChanged: {
        if (root.activeFocus)
            root.selectAll();
    }

    TextMetrics {
        id: underscore

        font: root.font
        text: "_"
    }
    Label {
        id: unitsLabel

        x: root.width - width - 6
        height: root.height
        text: root.units
        color: root.color
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
