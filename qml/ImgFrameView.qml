pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/** The picture of a source with its scroll bars, its time and the read-out at the pointer. */
Rectangle {
    id: root

    required property VeskObject source
    readonly property ImgFrame imgFrame: source?.imgFrame ?? null
    readonly property Camera camera: source as Camera ?? (source as AbstractTake)?.camera ?? null
    readonly property bool brefInProgress: ((camera?.brefState.value ?? 0) & Camera.BrefInProgress) !== 0
    readonly property SaveJob activeSaveJob: camera?.fileSaveJobQueue?.activeSaveJob ?? null

    color: Theme.palette.base
    Keys.forwardTo: [frame]
    Keys.onMenuPressed: zoomMenu.popup(frame, frame.width / 2, frame.height / 2)

    ImgFrameControl {
        id: frame

        anchors.fill: parent
        anchors.margins: 50
        focus: true
        imgFrame: root.imgFrame
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("Picture")
        onMouseXYChanged: root.source.veskFrame.rgbPoint = Qt.point(frame.mouseX, frame.mouseY)
        onRightClicked: zoomMenu.popup()

        // A text that is being typed is taken, and the keys are the picture's again.
        PointHandler {
            onActiveChanged: {
                if (active)
                    frame.forceActiveFocus();
            }
        }
    }
    ImgFrameScrollBar {
        x: frame.x + frame.paintedRect.x + frame.paintedRect.width + 2
        y: frame.y + frame.paintedRect.y
        height: frame.paintedRect.height
        orientation: Qt.Vertical
        shown: root.imgFrame?.panZoomActive ?? false
        maxPan: root.imgFrame?.maxPanY ?? 0
        pan: root.imgFrame?.panY ?? 0
        Accessible.name: qsTr("Vertical position")
        onPanned: pan => root.imgFrame.panY = pan
    }
    ImgFrameScrollBar {
        x: frame.x + frame.paintedRect.x
        y: frame.y + frame.paintedRect.y + frame.paintedRect.height + 2
        width: frame.paintedRect.width
        orientation: Qt.Horizontal
        shown: root.imgFrame?.panZoomActive ?? false
        maxPan: root.imgFrame?.maxPanX ?? 0
        pan: root.imgFrame?.panX ?? 0
        Accessible.name: qsTr("Horizontal position")
        onPanned: pan => root.imgFrame.panX = pan
    }
    Label {
        x: 20
        y: 20
        text: root.source?.timestamp ?? ""
        color: "white"
        font.letterSpacing: -0.5
        font.features: { "tnum": 1 }
        Accessible.role: Accessible.StaticText
        Accessible.name: qsTr("Time of the frame")
        Accessible.description: text
    }
    PixelReadout {
        anchors.left: parent.left
        anchors.bottom: parent.bottom
        anchors.margins: 20
        visible: frame.containsMouse
        pixelX: frame.mouseX
        pixelY: frame.mouseY
        veskFrame: root.source?.veskFrame ?? null
    }
    Loader {
        anchors.centerIn: parent
        active: root.brefInProgress || root.activeSaveJob !== null
        sourceComponent: root.brefInProgress ? brefBanner : saveBanner
    }
    Component {
        id: brefBanner

        BrefBanner {}
    }
    Component {
        id: saveBanner

        SaveBanner {
            job: root.activeSaveJob
        }
    }
    Menu {
        id: zoomMenu

        width: 120

        ZoomMenuItem {
            text: qsTr("Zoom 1:1")
            shown: root.imgFrame?.zoomScale !== 1.0
            onTriggered: {
                root.imgFrame.zoomFit = false;
                root.imgFrame.zoomScale = 1.0;
            }
        }
        ZoomMenuItem {
            text: qsTr("Zoom Fit")
            shown: !root.imgFrame?.zoomFit
            onTriggered: root.imgFrame.zoomFit = true
        }
    }
}
