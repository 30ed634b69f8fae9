pragma ComponentBehavior: Bound

import Vesk

/** Refuses to record while every partition holds a saved take. */
RefusalDialog {
    fixedWidth: 200
    fixedHeight: 100
    message: qsTr("No take partitions remaining! Delete takes to begin recording.")
}
