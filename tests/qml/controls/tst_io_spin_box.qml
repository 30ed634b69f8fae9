import QtQuick
import QtQuick.Controls
import QtTest
import Vesk

Item {
    id: root

    width: 300
    height: 300

    Component {
        id: boxComponent

        IOSpinBox {
            x: 50
            width: 160
            from: 0
            to: 268435455
            clkFreq: 100000000
        }
    }
    Component {
        id: spyComponent

        SignalSpy {}
    }

    TestCase {
        name: "IOSpinBox"
        when: windowShown

        property IOSpinBox box

        function init() {
            box = createTemporaryObject(boxComponent, root);
        }

        function shownText() {
            return box.contentItem.text;
        }

        /** Enters a text as a user does: into the focused field, ended by Return. */
        function enter(text) {
            box.contentItem.forceActiveFocus();
            box.contentItem.clear();
            box.contentItem.insert(0, text);
            keyClick(Qt.Key_Return);
        }

        function test_valueIsShownInEveryUnit_data() {
            // 12345 clocks at 100 MHz are 123.45 us
            return [
                { tag: "clocks", units: IOSpinBox.Clocks, text: "12345 clks" },
                { tag: "nanoseconds", units: IOSpinBox.Nanoseconds, text: "123450 ns" },
                { tag: "microseconds", units: IOSpinBox.Microseconds, text: "123.450 us" },
                { tag: "milliseconds", units: IOSpinBox.Milliseconds, text: "0.123450 ms" }
            ];
        }
        function test_valueIsShownInEveryUnit(data) {
            box.value = 12345;
            box.units = data.units;
            compare(shownText(), data.text);
            compare(box.value, 12345);
        }

        function test_zeroShowsDisabledInEveryUnit() {
            for (const units of [IOSpinBox.Clocks, IOSpinBox.Nanoseconds, IOSpinBox.Microseconds,
                                 IOSpinBox.Milliseconds]) {
                box.units = units;
                compare(shownText(), "Disabled");
            }
        }

        function test_stepFollowsTheUnit_data() {
            return [
                { tag: "clocks", units: IOSpinBox.Clocks, step: 1 },
                { tag: "nanoseconds", units: IOSpinBox.Nanoseconds, step: 1 },
                { tag: "microseconds", units: IOSpinBox.Microseconds, step: 100 },
                { tag: "milliseconds", units: IOSpinBox.Milliseconds, step: 100000 }
            ];
        }
        function test_stepFollowsTheUnit(data) {
            box.value = 200000;
            box.units = data.units;
            box.increase();
            compare(box.value, 200000 + data.step);
        }

        function test_typedTextSetsClocks_data() {
            return [
                { tag: "clk", text: "250 clk", clocks: 250, units: IOSpinBox.Clocks },
                { tag: "clks", text: "251clks", clocks: 251, units: IOSpinBox.Clocks },
                { tag: "ns", text: "500 ns", clocks: 50, units: IOSpinBox.Nanoseconds },
                { tag: "us", text: "2.5 us", clocks: 250, units: IOSpinBox.Microseconds },
                { tag: "µs", text: "3 µs", clocks: 300, units: IOSpinBox.Microseconds },
                { tag: "ms", text: "1.5ms", clocks: 150000, units: IOSpinBox.Milliseconds },
                { tag: "many blanks", text: "7   us", clocks: 700, units: IOSpinBox.Microseconds },
                { tag: "groups of digits", text: "1,000 clks", clocks: 1000, units: IOSpinBox.Clocks },
                { tag: "no unit", text: "77", clocks: 77, units: IOSpinBox.Clocks },
                { tag: "half a clock goes up", text: "25 ns", clocks: 3, units: IOSpinBox.Nanoseconds },
                { tag: "less than half a clock", text: "24 ns", clocks: 2, units: IOSpinBox.Nanoseconds }
            ];
        }
        function test_typedTextSetsClocks(data) {
            enter(data.text);
            compare(box.value, data.clocks);
            compare(box.units, data.units);
        }

        function test_numberWithoutUnitIsReadInThePresentUnit() {
            box.units = IOSpinBox.Microseconds;
            enter("12");
            compare(box.value, 1200);
            compare(box.units, IOSpinBox.Microseconds);
            compare(shownText(), "12.000 us");
        }

        function test_typedBeyondTheMaximumBecomesTheMaximum() {
            enter("300000000");
            compare(box.value, 268435455);
            compare(shownText(), "268435455 clks");
            enter("9999 ms");
            compare(box.value, 268435455);
        }

        function test_textThatIsNoNumberChangesNothing_data() {
            return [{ text: "fast" }, { text: "" }, { text: "5 s" }, { text: "1.2.3 us" }];
        }
        function test_textThatIsNoNumberChangesNothing(data) {
            box.value = 40;
            enter(data.text);
            compare(box.value, 40);
            compare(shownText(), "40 clks");
        }

        function test_typedPresentValueShowsItsUnitAgain() {
            box.value = 40;
            enter("40");
            compare(box.value, 40);
            compare(shownText(), "40 clks");
        }

        function test_newClockRenewsTheText_data() {
            return [
                { tag: "in the middle", value: 1000, text: "20.000 us" },
                { tag: "near the maximum", value: 268435455, text: "5368709.100 us" }
            ];
        }
        function test_newClockRenewsTheText(data) {
            box.units = IOSpinBox.Microseconds;
            box.value = data.value;
            box.clkFreq = 50000000;
            compare(box.value, data.value);
            compare(shownText(), data.text);
        }

        function test_valueModifiedTellsOnlyWhatTheUserDid() {
            const spy = createTemporaryObject(spyComponent, root,
                                              { target: box, signalName: "valueModified" });
            box.value = 5000;
            box.units = IOSpinBox.Milliseconds;
            box.clkFreq = 50000000;
            compare(spy.count, 0);
            enter("2 ms");
            compare(spy.count, 1);
            compare(box.value, 100000);
        }

        function test_rightClickOffersTheUnits() {
            box.value = 12345;
            mouseClick(box, 40, box.height / 2, Qt.RightButton);
            const menu = findChild(box, "unitsMenu");
            tryCompare(menu, "opened", true);
            compare(menu.width, 120);
            compare(menu.count, 4);
            const titles = [0, 1, 2, 3].map(i => menu.itemAt(i).text);
            compare(titles, ["Clocks", "Nanoseconds", "Microseconds", "Milliseconds"]);
            verify(menu.itemAt(0).checked);
            mouseClick(menu.itemAt(2));
            compare(box.units, IOSpinBox.Microseconds);
            compare(shownText(), "123.450 us");
            verify(menu.itemAt(2).checked);
            verify(!menu.itemAt(0).checked);
        }

        function test_focusSelectsTheWholeText() {
            box.value = 12345;
            box.contentItem.forceActiveFocus();
            compare(box.contentItem.selectedText, "12345 clks");
        }
    }
}
