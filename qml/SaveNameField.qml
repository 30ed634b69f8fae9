pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** The name of what is saved, with a button that puts a tag into it. */
RowLayout {
    id: root

    required property SaveTarget target

    function take() {
        // The cursor is still needed while a tag is chosen. A name that the camera gives is not typed.
        if (tags.visible || root.target.nameless)
            return;
        root.target.fileName = field.text === "" ? App.instance.currentDateTime() : field.text;
        field.show();
    }

    function insert(tag) {
        field.insert(field.cursorPosition, tag);
        root.target.fileName = field.text;
    }

    TextField {
        id: field

        function show() {
            text = Qt.binding(() => root.target.nameless ? "" : root.target.fileName);
        }

        Layout.fillWidth: true
        Layout.preferredHeight: 24
        enabled: !root.target.nameless
        validator: RegularExpressionValidator {
            regularExpression: /^(?! )[^\x00-\x1F\\/*?"|]*$/
        }
        Accessible.name: qsTr("File Name")
        Component.onCompleted: show()
        onEditingFinished: root.take()
    }
    IconButton {
        id: addTag

        iconText: "\uEA12"
        iconSize: 18
        name: qsTr("Insert a number")
        enabled: field.enabled
        ToolTip.visible: tipWanted && !tags.visible
        onClicked: tags.popup(addTag, 0, addTag.height)

        Menu {
            id: tags

            width: 128
            onClosed: field.forceActiveFocus()

            MenuItem {
                text: qsTr("Frame Number")
                Accessible.name: text
                onTriggered: root.insert("<fr>")
            }
            MenuItem {
                text: qsTr("Sequence Number")
                Accessible.name: text
                onTriggered: root.insert("<seq>")
            }
        }
    }
}
