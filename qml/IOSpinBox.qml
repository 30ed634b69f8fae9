pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import Vesk

/**
 * Shows and edits a count of clocks in a unit of the user's choice; the value stays in clocks. A number is
 * written with "." for the decimals, and "," between groups of digits is skipped.
 */
VeskSpinBox {
    id: root

    enum Units { Clocks, Nanoseconds, Microseconds, Milliseconds }

    /** Clocks a second. */
    required property real clkFreq
    property int units: IOSpinBox.Clocks
    property bool renewing: false

    readonly property var unitTable: [
        { suffix: "clks", title: qsTr("Clocks"), perSecond: root.clkFreq, decimals: 0 },
        { suffix: "ns", title: qsTr("Nanoseconds"), perSecond: 1e9, decimals: 0 },
        { suffix: "us", title: qsTr("Microseconds"), perSecond: 1e6, decimals: 3 },
        { suffix: "ms", title: qsTr("Milliseconds"), perSecond: 1e3, decimals: 6 }
    ]
    readonly property var unitOfSuffix: ({
            clk: IOSpinBox.Clocks,
            clks: IOSpinBox.Clocks,
            ns: IOSpinBox.Nanoseconds,
            us: IOSpinBox.Microseconds,
            "µs": IOSpinBox.Microseconds,
            ms: IOSpinBox.Milliseconds
        })

    function textOf(clocks) {
        if (clocks === 0)
            return qsTr("Disabled");
        const unit = root.unitTable[root.units];
        const number = root.units === IOSpinBox.Clocks ? clocks : clocks * unit.perSecond / root.clkFreq;
        return number.toFixed(unit.decimals) + " " + unit.suffix;
    }

    /** A number with or without groups of three digits; NaN for anything else, "1,5" as well. */
    function numberOf(text) {
        const plain = /^(\d+\.?\d*|\.\d+)$/.test(text);
        const grouped = /^\d{1,3}(,\d{3})+(\.\d*)?$/.test(text);
        return plain || grouped ? Number(text.replace(/,/g, "")) : NaN;
    }

    /** Clocks of a typed text, limited to the range; the present value when there is no number in it. */
    function clocksOf(text) {
        const match = text.trim().match(/^([\d.,]+)\s*(clk|clks|ns|us|µs|ms)?$/);
        const number = match ? root.numberOf(match[1]) : NaN;
        if (isNaN(number))
            return root.value;
        if (match[2])
            root.units = root.unitOfSuffix[match[2]];
        const perSecond = root.unitTable[root.units].perSecond;
        const clocks = root.units === IOSpinBox.Clocks ? number : number * root.clkFreq / perSecond;
        return Math.max(root.from, Math.min(root.to, Math.round(clocks)));
    }

    /**
     * The text is computed only when the value changes: a step there and back makes it anew. Steps of one clock
     * end where they began, also in a range that is shorter than the unit's step.
     */
    function renewText() {
        root.renewing = true;
        if (root.value === root.to) {
            root.decrease();
            root.increase();
        } else {
            root.increase();
            root.decrease();
        }
        root.renewing = false;
    }

    stepSize: renewing ? 1 : units === IOSpinBox.Microseconds ? Math.max(1, Math.round(clkFreq / 1e6))
        : units === IOSpinBox.Milliseconds ? Math.max(1, Math.round(clkFreq / 1e3)) : 1
    validator: null
    textFromValue: (clocks, locale) => root.textOf(clocks)
    valueFromText: (text, locale) => root.clocksOf(text)
    onClkFreqChanged: root.renewText()
    onUnitsChanged: root.renewText()
    Keys.onMenuPressed: unitsMenu.popup(root, 0, root.height)

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: unitsMenu.popup()
    }
    Menu {
        id: unitsMenu
        objectName: "unitsMenu"

        width: 120

        Repeater {
            model: root.unitTable

            RadioMenuItem {
                required property int index
                required property var modelData

                text: modelData.title
                checked: root.units === index
                onTriggered: root.units = index
            }
        }
    }
}
