import QtQuick
import QtTest
import Vesk

Item {
    id: root

    width: 300
    height: 300

    Component {
        id: paneComponent

        CollapsiblePane {
            width: 268
            label: "Camera"
            content: Rectangle {
                objectName: "content"
                height: 77
            }
        }
    }
    Component {
        id: backgroundComponent

        ControlBarBackground {
            height: 25
        }
    }
    Component {
        id: edgeComponent

        ControlBarEdge {}
    }

    TestCase {
        name: "CollapsiblePane"
        when: windowShown

        property CollapsiblePane pane
        property Item header

        function init() {
            pane = createTemporaryObject(paneComponent, root);
            header = pane.children[0].children[0];
        }

        /** The glyph at the right of the header. */
        function arrow() {
            return header.children.find(child => child.font?.family === "remixicon").text;
        }

        function test_startsUnfolded() {
            verify(pane.expanded);
            compare(arrow(), "\uEA4E");
            // padding 2, header 20, spacing 2, content, padding 2
            tryCompare(pane, "height", 2 + 20 + 2 + 77 + 2);
        }

        function test_foldedPaneIsItsHeader() {
            pane.expanded = false;
            compare(arrow(), "\uEA6E");
            tryCompare(pane, "height", 2 + 20 + 2);
            verify(!pane.contentItem.visible);
        }

        function test_clickAnywhereOnTheHeaderToggles_data() {
            return [{ tag: "label", x: 8 }, { tag: "middle", x: 130 }, { tag: "arrow", x: 260 }];
        }
        function test_clickAnywhereOnTheHeaderToggles(data) {
            mouseClick(header, data.x, 10);
            compare(pane.expanded, false);
            mouseClick(header, data.x, 10);
            compare(pane.expanded, true);
        }

        function test_clickOnTheContentDoesNotToggle() {
            mouseClick(pane.contentItem, 50, 40);
            compare(pane.expanded, true);
        }

        function test_spaceOnTheHeaderToggles() {
            header.forceActiveFocus();
            keyClick(Qt.Key_Space);
            compare(pane.expanded, false);
        }

        function test_contentOfAFoldedPaneIsBuiltWhenItIsUnfolded() {
            const folded = createTemporaryObject(paneComponent, root, { expanded: false });
            compare(folded.contentItem, null);
            folded.expanded = true;
            compare(folded.contentItem.objectName, "content");
        }

        function test_coloursAreThoseOfThePanes() {
            compare(pane.color, "#212121");
            compare(header.color, "#262626");
            compare(pane.contentItem.parent.parent.color, "#323232");
            compare(header.children[0].text, "Camera");
            compare(header.children[0].leftPadding, 5);
            compare(header.children[0].color, "#ffffff");
        }
    }

    TestCase {
        name: "ControlBar"
        when: windowShown

        function test_backgroundIsFramedLeftAndRight() {
            const row = createTemporaryObject(backgroundComponent, root);
            compare(row.width, 138);
            const image = grabImage(row);
            compare(image.pixel(1, 12), "#212121");
            compare(image.pixel(2, 12), "#262626");
            compare(image.pixel(135, 12), "#262626");
            compare(image.pixel(136, 12), "#212121");
        }

        function test_backgroundColorOverridesTheInside() {
            const row = createTemporaryObject(backgroundComponent, root, { backgroundColor: "#123456" });
            const image = grabImage(row);
            compare(image.pixel(60, 12), "#123456");
            compare(image.pixel(1, 12), "#212121");
        }

        function test_edgeIsOpenTowardsTheRows_data() {
            return [
                { tag: "top", topEdge: true, closed: 0, open: 4 },
                { tag: "bottom", topEdge: false, closed: 4, open: 0 }
            ];
        }
        function test_edgeIsOpenTowardsTheRows(data) {
            const edge = createTemporaryObject(edgeComponent, root, { topEdge: data.topEdge });
            compare(edge.height, 5);
            const image = grabImage(edge);
            compare(image.pixel(60, data.closed), "#212121");
            compare(image.pixel(60, data.open), "#262626");
            compare(image.pixel(0, data.open), "#212121");
        }
    }
}
