import QtQuick
import QtQuick.Controls
import QtTest
import Vesk

Item {
    id: root

    width: 300
    height: 400

    FocusScope {
        id: elsewhere

        width: 10
        height: 10
    }
    Component {
        id: unitsComponent

        UnitsComboBox {
            x: 50
            width: 140
            height: 30
            editable: true
            model: ["2000", "1000", "500"]
            units: "fps"
            validator: DoubleValidator {
                bottom: 0
                locale: "C"
            }
        }
    }
    Component {
        id: spinComponent

        VeskSpinBox {
            x: 50
            width: 140
            from: 1
            to: 2147483647
            value: 12
        }
    }
    Component {
        id: spyComponent

        SignalSpy {}
    }

    TestCase {
        name: "UnitsComboBox"
        when: windowShown

        property UnitsComboBox box
        property SignalSpy spy

        function init() {
            box = createTemporaryObject(unitsComponent, root);
            spy = createTemporaryObject(spyComponent, root, { target: box, signalName: "accepted" });
        }

        function labels() {
            return box.input.children.filter(child => child instanceof Label).map(label => label.text);
        }

        function type(text) {
            box.input.forceActiveFocus();
            box.input.selectAll();
            for (const key of text)
                keyClick(key);
        }

        function test_fieldShowsPrefixAndUnitAroundTheValue() {
            box.prefix = " f/";
            compare(box.input.text, "2000");
            compare(labels(), [" f/", "fps"]);
        }

        function test_everyRowShowsPrefixAndUnit_data() {
            return [
                { tag: "unit", prefix: "", units: "fps", rows: ["2000 fps", "1000 fps", "500 fps"] },
                { tag: "prefix", prefix: " f/", units: "", rows: [" f/2000", " f/1000", " f/500"] }
            ];
        }
        function test_everyRowShowsPrefixAndUnit(data) {
            box.prefix = data.prefix;
            box.units = data.units;
            box.popup.open();
            tryCompare(box.popup, "opened", true);
            const list = box.popup.contentItem;
            tryVerify(() => list.itemAtIndex(2) !== null);
            compare([0, 1, 2].map(i => list.itemAtIndex(i).text), data.rows);
            box.popup.close();
        }

        function test_typedTextIsAcceptedOnReturn() {
            type("750");
            compare(spy.count, 0);
            keyClick(Qt.Key_Return);
            compare(spy.count, 1);
            compare(box.input.text, "750");
        }

        function test_typedTextIsAcceptedWhenTheFocusLeaves() {
            type("1250");
            compare(spy.count, 0);
            elsewhere.forceActiveFocus();
            compare(spy.count, 1);
            compare(box.input.text, "1250");
        }

        function test_typedStartOfARowIsNotCompleted() {
            type("20");
            compare(box.input.text, "20");
        }

        function test_textThatIsNotAcceptableIsHandedOverOnReturn() {
            type("");
            keyClick(Qt.Key_Delete);
            keyClick(Qt.Key_Return);
            compare(spy.count, 1);
            verify(!box.input.acceptableInput);
        }

        function test_rowThatIsPickedShows() {
            box.currentIndex = 2;
            compare(box.input.text, "500");
        }

        function test_textThatTheValidatorRefusesCannotBeTyped() {
            type("7a5");
            compare(box.input.text, "75");
        }
    }

    TestCase {
        name: "VeskSpinBox"
        when: windowShown

        property VeskSpinBox box

        function init() {
            box = createTemporaryObject(spinComponent, root);
        }

        function test_isEditableWithCentredText() {
            verify(box.editable);
            compare(box.contentItem.horizontalAlignment, TextInput.AlignHCenter);
            verify(!box.contentItem.readOnly);
        }

        function test_focusSelectsTheWholeText() {
            box.contentItem.forceActiveFocus();
            compare(box.contentItem.selectedText, "12");
        }

        function test_typedNumberReplacesTheOld() {
            box.contentItem.forceActiveFocus();
            keyClick("7");
            keyClick(Qt.Key_Return);
            compare(box.value, 7);
        }
    }
}
