pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Vesk

/** In which form the frames are written, and how much that takes. */
SaveForm {
    id: root

    required property PlaybackVeskObject source
    required property SaveRange range
    required property SaveTarget target

    SaveLabel {
        text: qsTr("Format:")
    }
    RowLayout {
        Layout.columnSpan: 3
        Layout.fillWidth: true
        spacing: 14

        SaveChoice {
            name: qsTr("Format")
            entries: root.target.formats
            chosen: root.target.formatIndex
            onActivated: index => {
                root.target.codecIndex = 0;
                root.target.formatIndex = index;
            }
        }
        SaveLabel {
            Layout.preferredWidth: 55
            text: qsTr("Codec:")
            visible: codec.visible
        }
        SaveChoice {
            id: codec

            Layout.preferredWidth: 140
            name: qsTr("Codec")
            entries: root.target.codecs
            chosen: root.target.codecIndex
            visible: root.target.codecs.length > 0
            onActivated: index => root.target.codecIndex = index
        }
        // Takes what a wider window has to give.
        Item {
            Layout.fillWidth: true
        }
    }
    SaveLabel {
        text: qsTr("Est. File Size:")
    }
    SaveValue {
        name: qsTr("Est. File Size")
        text: Qt.locale().formattedDataSize(App.instance.saveManager.estFileSize(root.source, root.range.frCnt,
                                                                                 root.target.format, root.target.codec),
                                            2, Locale.DataSizeSIFormat)
    }
}
