pragma Singleton
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls

/** Colours and sizes that more than one view uses. The palette proper is in qtquickcontrols2.conf. */
QtObject {
    id: root

    /** The palette of the controls, for items that are no controls: these would see that of the desktop. */
    readonly property Palette palette: root.control.palette
    readonly property Control control: Control {}

    readonly property string iconFont: "remixicon"

    readonly property color boxColor: "#262626"
    readonly property color edgeColor: "#212121"
    readonly property color paneColor: "#323232"
    readonly property color disabledTextColor: "darkgray"
    readonly property color dimButtonColor: "dimgray"

    readonly property int labelWidth: 120
    readonly property int valueWidth: 140
    readonly property int labelPadding: 6
    readonly property int subLabelPadding: 24
    readonly property int rowHeight: 25
    readonly property int buttonHeight: 30
    readonly property int largeButtonHeight: 40

    readonly property int contextMenuWidth: 160
    readonly property real flickDeceleration: 20000
    readonly property int dialogMargin: 10
    readonly property int dialogFooterHeight: 40
    readonly property int dialogRowHeight: 18
}
