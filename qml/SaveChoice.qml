pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** A choice in the dialog for saving; with a single entry there is none. */
PlainComboBox {
    id: root

    required property string name
    required property list<var> entries
    required property int chosen

    model: root.entries.map(entry => entry.text)
    currentIndex: root.chosen
    enabled: root.entries.length > 1
    Layout.preferredWidth: 110
    Layout.preferredHeight: 24
    Accessible.name: root.name
    // A new list drops the place in it.
    onModelChanged: currentIndex = Qt.binding(() => root.chosen)
}
