import QtQuick
import Vesk

/** One factor of the white balance. */
AdjustmentRow {
    id: root

    /** A value object; it can be written whichever kind of source it belongs to. */
    required property var adjValue

    subRow: true
    logarithmic: true
    number: root.adjValue?.value ?? 1
    onEntered: number => root.adjValue.value = number
}
