import QtQuick

/** A text of a banner. */
Text {
    color: "white"
    font.pixelSize: 14
}
