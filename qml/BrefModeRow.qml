pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** How the black reference corrects the frames; shown for cameras that know more than one way. */
ComboRow {
    id: root

    required property Camera camera
    required property int corrMode
    required property int fsyncMode

    /** The user picked the other way; the other bits stay as they are. */
    signal corrModeChosen(int corrMode)

    label: qsTr("Black Ref Mode")
    model: [qsTr("Normal"), qsTr("Advanced")]
    currentIndex: root.corrMode & Camera.CorrModeBrefAdv ? 1 : 0
    visible: ((root.camera?.featureCorrMode.value ?? 0) & Camera.CorrModeBrefAdv) !== 0
    choosable: root.fsyncMode === Camera.FsyncModeInt
    onChosen: index => {
        const others = root.corrMode & ~Camera.CorrModeBrefAdv;
        root.corrModeChosen(index === 1 ? others | Camera.CorrModeBrefAdv : others);
    }
}
