pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** Row of the control bar with the button that opens the dialog to save frames of a source. */
ControlRow {
    id: root

    required property PlaybackVeskObject source

    rowHeight: Theme.buttonHeight

    ControlButton {
        text: qsTr("Save...")
        onClicked: dialog.open()
    }
    SaveDialogLoader {
        id: dialog

        source: root.source
    }
}
