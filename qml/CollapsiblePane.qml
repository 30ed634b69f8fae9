pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/** A titled section that folds away. Its content is built when it is first unfolded. */
Rectangle {
    id: root

    required property string label
    required property Component content
    property bool expanded: true
    readonly property Item contentItem: loader.item as Item

    property bool built: false

    function buildIfShown() {
        if (root.expanded && root.visible)
            root.built = true;
    }

    function toggle() {
        root.expanded = !root.expanded;
    }

    color: Theme.edgeColor
    implicitHeight: column.height + 4
    Component.onCompleted: root.buildIfShown()
    onExpandedChanged: root.buildIfShown()
    onVisibleChanged: root.buildIfShown()

    Column {
        id: column

        x: 2
        y: 2
        width: root.width - 4
        spacing: root.expanded ? 2 : 0

        Rectangle {
            id: header

            width: parent.width
            height: 20
            color: Theme.boxColor
            border.color: Theme.palette.highlight
            border.width: activeFocus ? 1 : 0
            activeFocusOnTab: true
            Accessible.role: Accessible.Button
            Accessible.name: root.label
            Accessible.checkable: true
            Accessible.checked: root.expanded
            Accessible.onPressAction: root.toggle()
            Accessible.onToggleAction: root.toggle()
            Keys.onSpacePressed: root.toggle()

            Text {
                height: parent.height
                leftPadding: 5
                text: root.label
                color: "white"
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
            Icon {
                anchors.right: parent.right
                width: height
                height: parent.height
                text: root.expanded ? "\uEA4E" : "\uEA6E"
                font.pixelSize: 16
            }
            TapHandler {
                onTapped: root.toggle()
            }
        }
        Rectangle {
            width: parent.width
            height: root.expanded ? loader.height : 0
            color: Theme.paneColor
            visible: root.expanded
            clip: true
            Accessible.role: Accessible.Grouping
            Accessible.name: root.label

            Loader {
                id: loader

                width: parent.width
                active: root.built
                sourceComponent: root.content
            }
        }
    }
}
