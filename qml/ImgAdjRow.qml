import QtQuick
import Vesk

/** One adjustment that has a value a channel: red, green and all, blue. */
AdjustmentRow {
    id: root

    /** 0 all channels, 1 red, 2 green, 3 blue. */
    required property int channel
    required property var red
    required property var common
    required property var blue
    readonly property var shownValue: root.channel === 1 ? root.red : root.channel === 3 ? root.blue : root.common

    number: root.shownValue?.value ?? 0
    onEntered: number => {
        const written = root.channel === 0 ? [root.red, root.common, root.blue] : [root.shownValue];
        for (const adjValue of written)
            adjValue.value = number;
    }
}
