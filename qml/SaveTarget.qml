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
    property real frameRate: 30
    property int quality: 15
    property string fileName: ""
    property string folder: ""

    function load() {
        const format = Number(App.instance.setting("save/format", Util.FormatVesk));
        root.formatIndex = Math.max(0, root.formats.findIndex(entry => entry.format === format));
        const codec = Number(App.instance.setting("save/codec", -1));
        root.codecIndex = Math.max(0, root.codecs.findIndex(entry => entry.codec === codec));
        root.frameRate = Number(App.instance.setting("save/fr_rate", root.frameRate));
        root.quality = Number(App.instance.setting("save/quality", root.quality));
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
