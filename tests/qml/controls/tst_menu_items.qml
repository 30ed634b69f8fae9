import QtQuick
import QtQuick.Controls
import QtTest
import Vesk

Item {
    id: root

    width: 400
    height: 300

    Component {
        id: menuComponent

        Menu {
            width: 160

            IconMenuItem {
                text: "Connect Camera..."
                iconText: "\uF288"
            }
            IconMenuItem {
                text: "Disconnect"
                iconText: "\uF51C"
                enabled: false
            }
            RadioMenuItem {
                text: "Clocks"
                checked: true
            }
            RadioMenuItem {
                text: "Milliseconds"
            }
        }
    }
    Component {
        id: spyComponent

        SignalSpy {}
    }

    TestCase {
        name: "MenuItems"
        when: windowShown

        property Menu menu

        function init() {
            menu = createTemporaryObject(menuComponent, root);
            menu.popup(root, 20, 20);
            tryCompare(menu, "opened", true);
        }
        function cleanup() {
            menu.close();
        }

        /** A menu follows the pointer only once it moves. */
        function hover(item) {
            mouseMove(item, 40, 10);
            wait(50);
            mouseMove(item, 41, 10);
        }

        function test_iconStandsInASquareBeforeTheText() {
            const row = menu.itemAt(0).contentItem;
            compare(menu.itemAt(0).height, 20);
            compare(row.children[0].text, "\uF288");
            compare(row.children[0].font.family, "remixicon");
            compare(row.children[0].width, 20);
            compare(row.children[1].text, "Connect Camera...");
            tryCompare(row.children[1], "x", 20 + 12);
        }

        function test_backgroundIs200By20() {
            compare(menu.itemAt(0).background.implicitWidth, 200);
            compare(menu.itemAt(0).background.implicitHeight, 20);
        }

        function test_itemUnderThePointerIsHighlighted() {
            const item = menu.itemAt(0);
            hover(item);
            tryCompare(item, "highlighted", true);
            verify(item.background.visible);
            compare(item.background.color, "#d25f15");
        }

        function test_disabledItemUnderThePointerLooksUnselected() {
            const item = menu.itemAt(1);
            hover(menu.itemAt(0));
            tryCompare(menu, "currentIndex", 0);
            hover(item);
            tryCompare(menu, "currentIndex", -1);
            verify(item.background.visible);
            compare(item.background.color, "#262626");
            verify(!menu.itemAt(0).highlighted);
            compare(item.contentItem.children[1].color, Qt.color("darkgray"));
            mouseMove(root, 380, 280);
            tryCompare(item.background, "visible", false);
        }

        function test_clickTriggers() {
            const spy = createTemporaryObject(spyComponent, root,
                                              { target: menu.itemAt(0), signalName: "triggered" });
            mouseClick(menu.itemAt(0));
            compare(spy.count, 1);
            tryCompare(menu, "visible", false);
        }

        function test_disabledItemDoesNotTrigger() {
            const spy = createTemporaryObject(spyComponent, root,
                                              { target: menu.itemAt(1), signalName: "triggered" });
            mouseClick(menu.itemAt(1));
            compare(spy.count, 0);
        }

        function test_radioItemsExcludeEachOther() {
            verify(menu.itemAt(2).checked);
            verify(menu.itemAt(3).indicator.visible);
            mouseClick(menu.itemAt(3));
            verify(menu.itemAt(3).checked);
            verify(!menu.itemAt(2).checked);
        }
    }
}
