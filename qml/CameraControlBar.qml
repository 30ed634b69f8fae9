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

    function readPanes() {
        mainPane.expanded = root.camera.setting("main_pane_expanded", true);
        acqPane.expanded = root.camera.setting("acq_pane_expanded", true);
        imgToolsPane.expanded = root.camera.setting("img_tools_pane_expanded", true);
        // Written per camera but read per application: colour sections start folded for every camera.
        colorAdjPane.expanded = App.instance.setting("color_adj_pane_expanded", false);
    }

    function writePanes() {
        root.camera.setSetting("main_pane_expanded", mainPane.expanded);
        root.camera.setSetting("acq_pane_expanded", acqPane.expanded);
        root.camera.setSetting("img_tools_pane_expanded", imgToolsPane.expanded);
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
        id: imgToolsPane

        width: root.width
        label: qsTr("Image Tools")
        content: ImgToolsControl {
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
}
