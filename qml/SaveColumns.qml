import QtQml

/** Widths of the columns of the list of saves, in pixels. */
QtObject {
    id: root

    readonly property int least: 64
    property int dest: 72
    property int name: 240
    property int status: 200
    property int camera: 200
    property int source: 240
    readonly property int action: 64
    readonly property int sum: dest + name + status + camera + source + action
}
