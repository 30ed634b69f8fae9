pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A setting that is one of a list. */
ControlRow {
    id: root

    required property var model
    required property int currentIndex
    property bool choosable: true
    property alias popupHeight: box.maximumPopupHeight
    property alias fontSize: box.font.pixelSize
    readonly property alias count: box.count

    /** The user picked an entry. */
    signal chosen(int index, string text)

    rowHeight: Theme.buttonHeight

    ControlComboBox {
        id: box

        property int maximumPopupHeight: 0

        model: root.model
        textRole: Array.isArray(root.model) ? "" : "display"
        enabled: root.choosable
        currentIndex: root.currentIndex
        Accessible.name: root.label
        onActivated: index => {
            root.chosen(index, box.textAt(index));
            // The camera may not take it; then nothing tells of a change.
            box.currentIndex = Qt.binding(() => root.currentIndex);
        }

        // An emptied list drops the place in it, and the place may be the same in the next one.
        onCountChanged: box.currentIndex = Qt.binding(() => root.currentIndex)

        Binding {
            target: box.popup
            property: "height"
            value: box.maximumPopupHeight
            when: box.maximumPopupHeight > 0
        }
    }
}
