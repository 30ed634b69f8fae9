import QtCore
import QtQml
import Vesk

/** What a save makes of its frames. Starts as the last one was. */
QtObject {
    id: root

    required property PlaybackVeskObject source
    /** Whose drive the source can be saved to; null if to none. */
    readonly property Camera camera: (source as Take)?.camera ?? null
    readonly property list<var> dests: {
        const file = {
            "text": qsTr("File"),
            "dest": SaveManager.FileDest
        };
        const drive = {
            "text": qsTr("SSD"),
            "dest": SaveManager.SsdDest
        };
        return root.camera ? [file, drive] : [file];
    }
    readonly property bool onDrive: dest === SaveManager.SsdDest
    /** The camera's firmware gives names to what it saves; it takes none. */
    readonly property bool nameless: onDrive && (camera?.featureSsdSave.value ?? 0) < 2
    readonly property list<var> fileFormats: [
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
    /** A camera writes what it reads. */
    readonly property list<var> formats: onDrive ? fileFormats.slice(0, 1) : fileFormats
    property int destIndex: 0
    readonly property int dest: dests[destIndex]?.dest ?? SaveManager.FileDest
    property int chosenFormat: 0
    readonly property int formatIndex: onDrive ? 0 : chosenFormat
    property int codecIndex: 0
    readonly property int format: formats[formatIndex]?.format ?? Util.FormatVesk
    readonly property list<var> codecs: formats[formatIndex]?.codecs ?? []
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
        const dest = root.storedNumber("save/dest", SaveManager.FileDest);
        root.destIndex = Math.max(0, root.dests.findIndex(entry => entry.dest === dest));
        const format = root.storedNumber("save/format", Util.FormatVesk);
        root.chosenFormat = Math.max(0, root.fileFormats.findIndex(entry => entry.format === format));
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
