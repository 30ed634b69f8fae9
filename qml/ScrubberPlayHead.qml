pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Shapes

/** The look of the play head: a thin line that stands on a triangle. */
Item {
    id: root

    required property int markerOffset

    width: 2 * markerOffset + 1

    Shape {
        anchors.fill: parent
        // The renderer without a graphics card has no layers; it smooths the edges by itself.
        layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
        layer.samples: 4

        ShapePath {
            fillColor: "#dddddd"
            strokeColor: "transparent"
            startX: 0
            startY: root.height

            PathLine {
                x: root.width / 2
                y: root.height - 7
            }
            PathLine {
                x: root.width
                y: root.height
            }
        }
    }
    Rectangle {
        x: root.markerOffset - 1
        width: 3
        height: root.height
        gradient: Gradient {
            orientation: Gradient.Horizontal

            GradientStop {
                position: 0
                color: "transparent"
            }
            GradientStop {
                position: 0.45
                color: "#dddddd"
            }
            GradientStop {
                position: 0.5
                color: "#dddddd"
            }
            GradientStop {
                position: 0.55
                color: "#dddddd"
            }
            GradientStop {
                position: 1
                color: "transparent"
            }
        }
    }
}
