pragma ComponentBehavior: Bound

import QtQuick
import Vesk

/**
 * A setting that is picked from a list or typed. List and place in it are the camera's: what was entered is
 * handed over, and the field then shows what became of it.
 */
ControlRow {
    id: root

    required property var list
    required property int listIndex
    /** What the field shows of a setting that is not in the list. */
    property string unlisted: ""
    property string units: ""
    property string prefix: ""
    property bool choosable: true
    property alias validator: box.validator

    /** The user picked an entry or typed an acceptable text. */
    signal entered(string text)

    /** Enters what was typed; a field that was left as it was, or that cannot be used any more, enters nothing. */
    function enterTyped() {
        if (box.edited && box.input.acceptableInput && root.choosable)
            root.enter(box.input.text);
        else
            root.settle();
    }

    function enter(text) {
        box.edited = false;
        root.entered(text);
        root.settleLater();
    }

    /** Shows what the camera has. */
    function settle() {
        box.edited = false;
        box.currentIndex = Qt.binding(() => root.listIndex);
        box.input.text = root.listIndex >= 0 ? box.textAt(root.listIndex) : root.unlisted;
    }

    /** The same once list and place in it both stand, unless the user has come to the field by then. */
    function settleLater() {
        Qt.callLater(root.settleUnlessTyping);
    }

    function settleUnlessTyping() {
        if (!box.activeFocus)
            root.settle();
    }

    rowHeight: Theme.buttonHeight

    UnitsComboBox {
        id: box

        anchors.centerIn: parent
        width: root.widgetWidth
        height: parent.height
        editable: true
        enabled: root.choosable
        model: root.list
        textRole: "display"
        units: root.units
        prefix: root.prefix
        currentIndex: root.listIndex
        Accessible.name: root.label
        onActivated: index => {
            root.enter(box.textAt(index));
            box.focus = false;
        }
        onAccepted: {
            root.enterTyped();
            box.focus = false;
        }
        Component.onCompleted: root.settle()
        Keys.onEscapePressed: {
            root.settle();
            box.focus = false;
        }

        // Closed without a choice.
        Connections {
            target: box.popup

            function onClosed() {
                box.focus = false;
            }
        }
        // A list that is made anew, or another place in it, while nobody types.
        Connections {
            target: root.list

            function onModelReset() {
                root.settleLater();
            }
        }
        Connections {
            target: root

            function onListIndexChanged() {
                root.settleLater();
            }
            function onUnlistedChanged() {
                root.settleLater();
            }
        }
    }
}
