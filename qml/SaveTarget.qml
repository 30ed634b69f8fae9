import QtCore
import QtQml
import Vesk

/** What a save makes of its frames. Starts as the last one was. */
QtObject {
    id: root

    readonly property list<var> formats: [
        {
            "text": qsTr("VESK"),
            "format": Util.FormatVesk,
            "codecs": []
        },
        {
            "text": qsTr("AVI"),
            "format": Util.FormatAvi,
            "codecs": [
                {
                    "text": qsTr("RAW - BGR24"),
                    "codec": Util.CodecRaw_BGR24
                },
                {
                    "text": qsTr("RAW - Gray8"),
                    "codec": Util.CodecRaw_Gray8
                }
            ]
        },
        {
            "text": qsTr("MP4"),
            "format": Util.FormatMp4,
            "codecs": [
                {
                    "text": qsTr("AV1 - YUV420P"),
                    "codec": Util.CodecAV1_YUV420P,
                    "worstQuality": 63
                },
                {
                    "text": qsTr("AV1 - YUV420P10"),
                    "codec": Util.CodecAV1_YUV420P10,
                    "worstQuality": 63
                },
                {
                    "text": qsTr("H.264 - YUV420P"),
                    "codec": Util.CodecH264,
                    "worstQuality": 51
                }
            ]
        },
        {
            "text": qsTr("TIFF"),
            "format": Util.FormatTiff,
            "codecs": [
                {
                    "text": qsTr("RAW - RGB24"),
                    "codec": Util.CodecRaw_RGB24
                }
            ]
        }
    ]
    property int dest: SaveManager.FileDest
    property int formatIndex: 0
    property int codecIndex: 0
    readonly property int format: formats[formatIndex].format
    readonly property list<var> codecs: formats[formatIndex].codecs
    readonly property int codec: codecs[codecIndex]?.codec ?? Util.CodecVesk
    readonly property bool isVideo: format === Util.FormatAvi || format === Util.FormatMp4
    /** Of the video, in frames per second. */
    property real frameRate: defaultFrameRate
    readonly property real lowestFrameRate: 1
    readonly property real highestFrameRate: 240
    readonly property real defaultFrameRate: 30
    /** The largest quantiser of a codec that compresses, 0 for the others. */
    readonly property int worstQuality: codecs[codecIndex]?.worstQuality ?? 0
    /** A quantiser: less is better. */
    readonly property int quality: worstQuality > 0 ? Math.max(1, Math.min(chosenQuality, worstQuality)) : chosenQuality
    property int chosenQuality: 15
    property string fileName: ""
    property string folder: ""

    function storedNumber(key: string, fallback: real): real {
        const stored = App.instance.setting(key, fallback);
        const number = Number(stored);
        return isNaN(number) || stored === null || stored === "" ? fallback : number;
    }

    function load() {
        const format = root.storedNumber("save/format", Util.FormatVesk);
        root.formatIndex = Math.max(0, root.formats.findIndex(entry => entry.format === format));
        const codec = root.storedNumber("save/codec", -1);
        root.codecIndex = Math.max(0, root.codecs.findIndex(entry => entry.codec === codec));
        const frameRate = root.storedNumber("save/fr_rate", root.defaultFrameRate);
        root.frameRate = Math.max(root.lowestFrameRate, Math.min(frameRate, root.highestFrameRate));
        root.chosenQuality = root.storedNumber("save/quality", root.chosenQuality);
        root.fileName = App.instance.setting("save/filename", App.instance.currentDateTime());
        const documents = StandardPaths.writableLocation(StandardPaths.DocumentsLocation);
        root.folder = App.instance.setting("save/folder", App.instance.filePathFromUrl(documents.toString()));
    }

    function store() {
        App.instance.setSetting("save/dest", root.dest);
        App.instance.setSetting("save/format", root.format);
        App.instance.setSetting("save/codec", root.codec);
        App.instance.setSetting("save/fr_rate", root.frameRate);
        App.instance.setSetting("save/quality", root.quality);
        App.instance.setSetting("save/filename", root.fileName);
        App.instance.setSetting("save/folder", root.folder);
    }

    Component.onCompleted: root.load()
}
