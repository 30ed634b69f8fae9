import Vesk

/** What the camera's video output shows. */
ControlGrid {
    id: root

    required property Camera camera

    ComboRow {
        label: qsTr("Format")
        model: root.camera.vidFormatList
        currentIndex: root.camera.vidFormatIndex
        fontSize: 11
        choosable: count > 1
        onChosen: (index, text) => root.camera.vidFormat.value = text
    }
}
