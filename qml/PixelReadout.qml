pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** Place and colour of the pixel under the pointer; the colour is on the 9-bit scale. */
Row {
    id: root

    required property int pixelX
    required property int pixelY
    required property VeskFrame veskFrame
    readonly property ImgAdjUtil util: App.instance.imgAdjUtil

    Label {
        width: 50
        text: qsTr("X: ") + root.pixelX
        color: "white"
    }
    Label {
        width: 50
        text: qsTr("Y: ") + root.pixelY
        color: "white"
    }
    Label {
        width: 120
        text: qsTr("RGB: ") + root.util.pix16bTo9b(root.veskFrame?.r ?? 0) + ", "
              + root.util.pix16bTo9b(root.veskFrame?.g ?? 0) + ", " + root.util.pix16bTo9b(root.veskFrame?.b ?? 0)
        color: "white"
    }
}
