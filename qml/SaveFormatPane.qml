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
        // What a wider window has to give goes to the other rows.
        Layout.fillWidth: false
        spacing: 14

        SaveChoice {
            name: qsTr("Format")
            entries: root.target.formats
            chosen: root.target.formatIndex
            onActivated: index => {
                if (index === root.target.formatIndex)
                    return;
                root.target.codecIndex = 0;
                root.target.chosenFormat = index;
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
    }
    SaveLabel {
        text: qsTr("Frame Rate:")
        visible: root.target.isVideo
    }
    SaveFrameRate {
        Layout.columnSpan: 3
        target: root.target
        visible: root.target.isVideo
    }
    SaveLabel {
        text: qsTr("Quality:")
        visible: root.target.worstQuality > 0
    }
    SaveQuality {
        Layout.columnSpan: 3
        Layout.fillWidth: true
        target: root.target
        visible: root.target.worstQuality > 0
    }
    // How well a film compresses is known only when it is made.
    SaveLabel {
        text: qsTr("Est. File Size:")
        visible: root.target.format !== Util.FormatMp4
    }
    SaveValue {
        name: qsTr("Est. File Size")
        visible: root.target.format !== Util.FormatMp4
        text: Qt.locale().formattedDataSize(App.instance.saveManager.estFileSize(root.source, root.range.frCnt,
                                                                                 root.target.format, root.target.codec),
                                            2, Locale.DataSizeSIFormat)
    }
}
