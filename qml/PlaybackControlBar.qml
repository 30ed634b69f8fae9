pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** The sections of a source with recorded frames. The first one is that of the kind of source. */
Column {
    id: root

    required property PlaybackVeskObject source
    /** Title and content of the first section. */
    required property string label
    required property Component content

    width: Theme.labelWidth + Theme.valueWidth + 8
    spacing: 2
    topPadding: 2

    PlaybackPane {
        key: "main"
        label: root.label
        content: root.content
    }
    PlaybackPane {
        key: "camera"
        label: qsTr("Camera")
        content: PlaybackCameraControl {
            source: root.source
        }
    }
    PlaybackPane {
        key: "img_tools"
        label: qsTr("Image Tools")
        content: ImgToolsControl {
            source: root.source
        }
    }
    PlaybackPane {
        key: "img_adj"
        label: qsTr("Image Adjustments")
        content: ImgAdjControl {
            source: root.source
        }
    }
    PlaybackPane {
        key: "color_adj"
        expandedAtFirst: false
        label: qsTr("Color Adjustments")
        visible: (root.source?.cfa.value ?? 0) !== 0
        content: ColorAdjControl {
            source: root.source
        }
    }
    PlaybackPane {
        key: "img_search"
        label: qsTr("Image Search")
        content: ImgSearchControl {
            source: root.source
        }
    }
    PlaybackPane {
        key: "lens"
        label: qsTr("Lens Info")
        content: LensInfoControl {
            source: root.source
        }
    }
}
