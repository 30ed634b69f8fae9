pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Fusion
import Vesk

/** The bar of a recording: its track, the part between the markers A and B, the trigger and the play head. */
PlaybackScrubberTemplate {
    id: root

    /** From the left edge of a handle to the pixel that it points at. */
    readonly property int markerOffset: 5
    readonly property bool pressed: playHead.pressed || aMarker.pressed || bMarker.pressed

    /** Where on the bar a place along the track is. */
    function placeOf(position) {
        return track.x + Math.round(position * (track.width - 1));
    }

    implicitHeight: trigger.height + track.height + 5
    height: implicitHeight
    playHead.handle: head
    aMarker.handle: aHandle
    bMarker.handle: bHandle
    trigMarker.handle: trigger
    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("Frames")

    Icon {
        id: trigger

        x: root.placeOf(root.trigMarker.position) + 0.5 - width / 2
        text: "\uF201"
        font.pixelSize: 14
        font.bold: true
        visible: root.firstFr <= root.trigMarker.fr && root.trigMarker.fr <= root.lastFr
    }
    Rectangle {
        id: track

        x: root.markerOffset
        y: trigger.height + 3
        width: root.width - 2 * root.markerOffset
        height: 20
        radius: 2
        border.color: Fusion.outline(Theme.palette)
        gradient: Gradient {
            GradientStop {
                position: 0
                color: Qt.darker(Fusion.grooveColor(Theme.palette), 1.1)
            }
            GradientStop {
                position: 1
                color: Qt.lighter(Fusion.grooveColor(Theme.palette), 1.1)
            }
        }

        Rectangle {
            x: aHandle.x
            width: bHandle.x - aHandle.x + 1
            height: parent.height
            radius: 2
            border.color: Qt.darker(Fusion.highlight(Theme.palette), 1.1)
            gradient: Gradient {
                GradientStop {
                    position: 0
                    color: Qt.darker(Fusion.highlight(Theme.palette), 1.2)
                }
                GradientStop {
                    position: 1
                    color: Qt.lighter(Fusion.highlight(Theme.palette), 1.0)
                }
            }
        }
    }
    ScrubberPlayHead {
        id: head

        x: root.placeOf(root.playHead.position) - root.markerOffset
        y: track.y
        height: track.height + 2
        markerOffset: root.markerOffset
    }
    ScrubberMarker {
        id: aHandle

        x: root.placeOf(root.aMarker.position) - root.markerOffset
        y: track.y - 2
        height: track.height + 4
        markerOffset: root.markerOffset
    }
    ScrubberMarker {
        id: bHandle

        x: root.placeOf(root.bMarker.position) - root.markerOffset
        y: track.y - 2
        height: track.height + 4
        markerOffset: root.markerOffset
    }
}
