import QtQuick

/** The look of the markers A and B: a bar through the track. */
Item {
    id: root

    required property int markerOffset

    width: 2 * markerOffset + 1

    Rectangle {
        x: root.markerOffset - 1
        width: 3
        height: root.height
        radius: 2
        color: "#dddddd"
    }
}
