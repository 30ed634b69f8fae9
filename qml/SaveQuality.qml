pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** How well a film that is compressed looks: the further to the right, the better and the larger. */
RowLayout {
    id: root

    required property SaveTarget target

    spacing: 10

    VeskSlider {
        id: slider

        Layout.fillWidth: true
        Layout.preferredHeight: 24
        from: Math.max(to, root.target.worstQuality)
        to: 1
        stepSize: 1
        value: root.target.quality
        Accessible.name: qsTr("Quality")
        // What was cut off at the end of another codec comes back with this one's.
        onFromChanged: value = Qt.binding(() => root.target.quality)
        onMoved: root.target.chosenQuality = value
        // The keys go the way of the handle, which is not that of the number.
        Keys.onLeftPressed: root.target.chosenQuality = Math.min(root.target.quality + 1, from)
        Keys.onRightPressed: root.target.chosenQuality = Math.max(root.target.quality - 1, to)
    }
    Label {
        Layout.preferredWidth: 24
        horizontalAlignment: Text.AlignRight
        text: root.target.quality
        font.features: { "tnum": 1 }
        Accessible.ignored: true
    }
}
