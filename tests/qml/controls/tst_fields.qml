import QtQuick
import QtQuick.Controls
import QtTest
import Vesk

Item {
    id: root

    width: 300
    height: 300

    property real model: 1.5

    FocusScope {
        id: elsewhere

        width: 10
        height: 10
    }
    Component {
        id: adjComponent

        AdjTextField {
            x: 50
            y: 50
            width: 100
            name: "Red"
            value: root.model
            validator: DoubleValidator {
                bottom: 0.1
                top: 10
                decimals: 2
                notation: DoubleValidator.StandardNotation
                locale: "C"
            }
            onEditingFinished: number => root.model = number
        }
    }
    Component {
        id: flatComponent

        FlatTextField {
            x: 50
            y: 50
            width: 100
            text: "-12"
        }
    }
    Component {
        id: unitsComponent

        UnitsTextField {
            x: 50
            y: 50
            width: 140
            text: "10"
            units: "frames"
        }
    }
    Component {
        id: spyComponent

        SignalSpy {}
    }

    TestCase {
        name: "AdjTextField"
        when: windowShown

        property AdjTextField field
        property TextField input
        property SignalSpy spy

        function init() {
            root.model = 1.5;
            field = createTemporaryObject(adjComponent, root);
            input = field.children[0];
            spy = createTemporaryObject(spyComponent, root, { target: field, signalName: "editingFinished" });
            mouseMove(root, 250, 250);
        }

        function type(text) {
            input.forceActiveFocus();
            for (const key of text)
                keyClick(key);
        }

        function test_valueIsShownWithTwoDecimals_data() {
            return [{ value: 2, text: "2.00" }, { value: 0.105, text: "0.10" }, { value: 9.999, text: "10.00" },
                    { value: -0.25, text: "-0.25" }];
        }
        function test_valueIsShownWithTwoDecimals(data) {
            root.model = data.value;
            compare(input.text, data.text);
        }

        function test_typedNumberIsHandedOverOnReturn() {
            type("2.5");
            compare(spy.count, 0);
            compare(root.model, 1.5);
            keyClick(Qt.Key_Return);
            compare(spy.count, 1);
            compare(spy.signalArguments[0][0], 2.5);
            compare(root.model, 2.5);
            compare(input.text, "2.50");
            verify(!input.activeFocus);
        }

        function test_valueThatWasOnlyLookedAtIsNotRounded() {
            root.model = 1.504;
            input.forceActiveFocus();
            keyClick(Qt.Key_Return);
            input.forceActiveFocus();
            elsewhere.forceActiveFocus();
            compare(spy.count, 0);
            compare(root.model, 1.504);
        }

        function test_unacceptableTextIsRedAndNotHandedOver() {
            compare(input.color, "#ffffff");
            type("0.0");
            verify(!input.acceptableInput);
            compare(input.color, "#ff0000");
            keyClick(Qt.Key_Return);
            compare(spy.count, 0);
            compare(root.model, 1.5);
            compare(input.text, "1.50");
            verify(!input.activeFocus);
        }

        function test_unacceptableTextGivesWayToTheValueWhenLeft() {
            type("0.0");
            elsewhere.forceActiveFocus();
            compare(input.text, "1.50");
            compare(spy.count, 0);
            compare(input.color, "#ffffff");
        }

        function test_escapeGivesUpTheEdit() {
            type("3");
            keyClick(Qt.Key_Escape);
            compare(input.text, "1.50");
            compare(root.model, 1.5);
            verify(!input.activeFocus);
        }

        function test_modelThatCorrectsTheNumberIsShown() {
            type("4");
            keyClick(Qt.Key_Return);
            compare(input.text, "4.00");
            root.model = 3.75;
            compare(input.text, "3.75");
        }

        function test_focusSelectsTheWholeText() {
            input.forceActiveFocus();
            compare(input.selectedText, "1.50");
        }

        function test_backgroundShowsOnlyHoveredOrFocused() {
            compare(input.background.color.a, 0);
            input.forceActiveFocus();
            compare(input.background.color, "#191919");
            elsewhere.forceActiveFocus();
            compare(input.background.color.a, 0);
            mouseMove(input, 20, 10);
            tryCompare(input.background, "color", "#191919");
        }
    }

    TestCase {
        name: "FlatTextField"
        when: windowShown

        function test_backgroundShowsOnlyHoveredOrFocused() {
            mouseMove(root, 250, 250);
            const field = createTemporaryObject(flatComponent, root);
            compare(field.background.color.a, 0);
            field.forceActiveFocus();
            compare(field.background.color, "#191919");
            elsewhere.forceActiveFocus();
            compare(field.background.color.a, 0);
            mouseMove(field, 20, 10);
            tryCompare(field.background, "color", "#191919");
        }

        function test_unacceptableTextKeepsItsColour() {
            const field = createTemporaryObject(flatComponent, root);
            field.validator = createTemporaryQmlObject("import QtQuick; IntValidator { bottom: 0; top: 5 }", root);
            verify(!field.acceptableInput);
            compare(field.color, "#ffffff");
        }

        function test_disabledTextIsDark() {
            const field = createTemporaryObject(flatComponent, root);
            field.enabled = false;
            compare(field.color, Qt.color("darkgray"));
        }
    }

    TestCase {
        name: "UnitsTextField"
        when: windowShown

        property UnitsTextField field
        property Label label

        function init() {
            field = createTemporaryObject(unitsComponent, root);
            label = field.children.find(child => child instanceof Label && child.text === "frames");
        }

        function test_unitStandsAtTheRightOfTheField() {
            verify(label);
            verify(label.width > 0);
            compare(label.x, field.width - label.width - 6);
        }

        function test_textNeverRunsIntoTheUnit() {
            const underscore = createTemporaryQmlObject("import QtQuick; TextMetrics { text: '_' }", root);
            underscore.font = field.font;
            compare(field.rightPadding, 4 + label.width + underscore.advanceWidth);
            const before = field.rightPadding;
            field.units = "f";
            verify(field.rightPadding < before);
        }

        function test_focusSelectsTheNumberOnly() {
            field.forceActiveFocus();
            compare(field.selectedText, "10");
            compare(field.text, "10");
        }
    }
}
