pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T
import Vesk

/**
 * Combo box that shows a prefix and a unit around its value, in the field and in the list. What is typed stays
 * as it was typed: the field is not the base's own, which would complete "2" to an entry "2066".
 */
ComboBox {
    id: root

    property string prefix: ""
    required property string units
    /** The user has changed the text since it was shown; whoever shows a text takes this back. */
    property bool edited: false
    readonly property T.TextField input: (contentItem as UnitsComboField)?.field ?? null

    /** A row of the list as it is shown. */
    function decorated(value) {
        return root.units === "" ? root.prefix + value : root.prefix + value + " " + root.units;
    }

    delegate: MenuItem {
        required property int index

        width: ListView.view?.width ?? root.width
        text: root.decorated(root.textAt(index))
        font.weight: root.currentIndex === index ? Font.DemiBold : Font.Normal
        highlighted: root.highlightedIndex === index
        hoverEnabled: root.hoverEnabled
        Accessible.name: text
    }

    contentItem: UnitsComboField {
        box: root
        prefix: root.prefix
        units: root.units
        name: root.Accessible.name
        onEdited: root.edited = true
    }
}
