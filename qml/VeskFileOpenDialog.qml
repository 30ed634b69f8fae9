pragma ComponentBehavior: Bound

import QtCore
import QtQuick.Dialogs
import Vesk

/** Opens native files as sources. It starts where files were opened the last time. */
FileDialog {
    id: root

    readonly property string folderKey: "open/folder"

    /** Path of the folder that a file lies in. */
    function folderOf(path: string): string {
        return path.slice(0, Math.max(path.lastIndexOf("/"), 1));
    }

    title: qsTr("Open Vesk File")
    fileMode: FileDialog.OpenFiles
    nameFilters: [qsTr("VESK files (*.vesk)"), qsTr("All files (*)")]
    currentFolder: {
        const folder = App.instance.setting(root.folderKey, "");
        return folder ? App.instance.fileUrlFromPath(folder)
                      : StandardPaths.writableLocation(StandardPaths.DocumentsLocation);
    }
    onAccepted: {
        const files = root.selectedFiles.map(file => file.toString());
        for (const file of files)
            App.instance.openVeskFile(file);
        // Of the file and not of the dialog, as dialogs of some desktops do not tell where the user has gone.
        App.instance.setSetting(root.folderKey, root.folderOf(App.instance.filePathFromUrl(files[0])));
    }
}
