pragma ComponentBehavior: Bound

import Vesk

/** Refuses a black reference while the camera has no slot for it. */
RefusalDialog {
    fixedWidth: 240
    fixedHeight: 100
    message: qsTr("No black reference slots remaining! Delete saved takes to clear slots.")
}
