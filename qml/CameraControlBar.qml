pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The sections of a camera's settings. Which of them are unfolded is kept with the camera. */
Column {
    id: root

    required property Camera camera
    readonly property int acqState: camera.acqState.value ?? 0
    /** True in the states in which the camera takes changes: standby and recording. */
    readonly property bool stbyOrRec: acqState === 1 || acqState === 2 || acqState === 6
    /** What is kept of the panes that always stand: in the order shown, with the state of a camera not yet known. */
    readonly property var panes: [
        { pane: mainPane, key: "main_pane_expanded", expanded: true },
        { pane: acqPane, key: "acq_pane_expanded", expanded: true },
        { pane: frameBufferPane, key: "fr_buffer_pane_expanded", expanded: true },
        { pane: imgToolsPane, key: "img_tools_pane_expanded", expanded: true },
        { pane: imgAdjPane, key: "img_adj_pane_expanded", expanded: true },
        { pane: ssdPane, key: "ssd_pane_expanded", expanded: true },
        { pane: ssdAutosavePane, key: "ssd_autosave_pane_expanded", expanded: true },
        { pane: lensPane, key: "lens_pane_expanded", expanded: true },
        { pane: videoPane, key: "video_pane_expanded", expanded: true },
        { pane: fwPane, key: "fw_pane_expanded", expanded: false }
    ]

    function readPanes() {
        for (const kept of root.panes)
            kept.pane.expanded = root.camera.setting(kept.key, kept.expanded);
        for (let i = 0; i < linePanes.count; ++i) {
            const line = linePanes.itemAt(i) as CameraIOPane;
            line.expanded = root.camera.setting(line.settingsKey, false);
        }
        // Written per camera but read per application: colour sections start folded for every camera.
        colorAdjPane.expanded = App.instance.setting("color_adj_pane_expanded", false);
    }

    function writePanes() {
        for (const kept of root.panes)
            root.camera.setSetting(kept.key, kept.pane.expanded);
        for (let i = 0; i < linePanes.count; ++i) {
            const line = linePanes.itemAt(i) as CameraIOPane;
            root.camera.setSetting(line.settingsKey, line.expanded);
        }
        root.camera.setSetting("color_adj_pane_expanded", colorAdjPane.expanded);
    }

    width: Theme.labelWidth + Theme.valueWidth + 8
    spacing: 2
    topPadding: 2
    Component.onCompleted: root.readPanes()
    Component.onDestruction: root.writePanes()

    Connections {
        target: root.camera

        function onCameraConnected() {
            root.readPanes();
        }
    }
    CollapsiblePane {
        id: mainPane

        width: root.width
        label: qsTr("Camera")
        content: CameraMainControl {
            camera: root.camera
        }
    }
    CollapsiblePane {
        id: acqPane

        width: root.width
        label: qsTr("Acquisition")
        content: CameraAcqControl {
            camera: root.camera
            acqState: root.acqState
            stbyOrRec: root.stbyOrRec
        }
    }
    CollapsiblePane {
        id: frameBufferPane

        width: root.width
        label: qsTr("Frame Buffer")
        content: CameraFrameBufferControl {
            camera: root.camera
            acqState: root.acqState
            stbyOrRec: root.stbyOrRec
        }
    }
    CollapsiblePane {
        id: imgToolsPane

        width: root.width
        label: qsTr("Image Tools")
        content: ImgToolsControl {
            source: root.camera
        }
    }
    CollapsiblePane {
        id: imgAdjPane

        width: root.width
        label: qsTr("Image Adjustments")
        content: ImgAdjControl {
            source: root.camera
        }
    }
    CollapsiblePane {
        id: colorAdjPane

        width: root.width
        label: qsTr("Color Adjustments")
        expanded: false
        visible: (root.camera.imgAdjModel.cfa.value ?? 0) !== 0
        content: ColorAdjControl {
            source: root.camera
        }
    }
    CollapsiblePane {
        id: ssdPane

        width: root.width
        label: qsTr("SSD")
        content: SsdControl {
            camera: root.camera
        }
    }
    CollapsiblePane {
        id: ssdAutosavePane

        width: root.width
        label: qsTr("SSD Autosave")
        visible: (root.camera.featureSsdSave.value ?? 0) >= 3
        content: SsdAutosaveControl {
            camera: root.camera
        }
    }
    CollapsiblePane {
        id: lensPane

        width: root.width
        label: qsTr("Lens & Shutter")
        content: LensShutterControl {
            camera: root.camera
        }
    }
    Repeater {
        id: linePanes

        model: root.camera.ios

        CameraIOPane {
            width: root.width
            camera: root.camera
        }
    }
    CollapsiblePane {
        id: videoPane

        width: root.width
        label: qsTr("Video")
        content: VideoControl {
            camera: root.camera
        }
    }
    CollapsiblePane {
        id: fwPane

        width: root.width
        label: qsTr("Firmware")
        expanded: false
        content: CameraFWControl {
            camera: root.camera
        }
    }
}
