pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Vesk

/** The main window: menu bar, the view of the selected source, and the tabs at the right. */
ApplicationWindow {
    id: root

    readonly property VeskObject selected: App.instance.selectedVeskObject
    readonly property int backgroundView: App.instance.backgroundView
    /** The source of the view shown. It outlives the selection, so that a view on its way out still has it. */
    property Camera shownCamera
    property Take shownTake
    property SsdTake shownSsdTake
    property VeskFile shownVeskFile
    property PlaybackVeskObject shownPlayback

    function showSelected() {
        menuArea.sourceComponent = undefined;
        mainArea.sourceComponent = undefined;
        // A question about the source that goes is not to be answered for the one that comes.
        takesDeleteAll.active = false;
        takeDeletion.drop();
        saveDialog.active = false;
        root.shownCamera = root.selected as Camera ?? root.shownCamera;
        root.shownTake = root.selected as Take ?? root.shownTake;
        root.shownSsdTake = root.selected as SsdTake ?? root.shownSsdTake;
        root.shownVeskFile = root.selected as VeskFile ?? root.shownVeskFile;
        root.shownPlayback = root.selected as PlaybackVeskObject ?? root.shownPlayback;
        switch (root.selected?.type) {
        case VeskObject.CameraType:
            menuArea.sourceComponent = cameraMenuBar;
            mainArea.sourceComponent = cameraView;
            break;
        case VeskObject.TakeType:
            menuArea.sourceComponent = takeMenuBar;
            mainArea.sourceComponent = takeView;
            break;
        case VeskObject.SsdTakeType:
            menuArea.sourceComponent = ssdTakeMenuBar;
            mainArea.sourceComponent = ssdTakeView;
            break;
        case VeskObject.VeskFileType:
            menuArea.sourceComponent = veskFileMenuBar;
            mainArea.sourceComponent = veskFileView;
            break;
        default:
            menuArea.sourceComponent = aboutMenuBar;
            mainArea.sourceComponent = root.backgroundView === VeskApp.SaveProgress ? saveProgressView : aboutView;
        }
    }

    /** A maximized or minimized window leaves a sane place behind for the time when it is neither. */
    function storeGeometry() {
        const maximized = root.visibility === Window.Maximized;
        const normal = !maximized && root.visibility !== Window.Minimized;
        const width = normal ? root.width : root.minimumWidth;
        const height = normal ? root.height : root.minimumHeight;
        App.instance.setSetting("window/maximized", maximized);
        App.instance.setSetting("window/x", normal ? root.x : Math.round((Screen.width - width) / 2));
        App.instance.setSetting("window/y", normal ? root.y : Math.round((Screen.height - height) / 2));
        App.instance.setSetting("window/width", width);
        App.instance.setSetting("window/height", height);
    }

    function restoreGeometry() {
        root.width = App.instance.setting("window/width", root.minimumWidth);
        root.height = App.instance.setting("window/height", root.minimumHeight);
        root.x = App.instance.setting("window/x", Screen.width / 2 - root.width / 2);
        root.y = App.instance.setting("window/y", Screen.height / 2 - root.height / 2);
    }

    title: "VESK"
    width: minimumWidth
    height: minimumHeight
    minimumWidth: 1280
    minimumHeight: 720
    visibility: App.instance.setting("window/maximized", false) ? Window.Maximized : Window.Windowed
    menuBar: Loader {
        id: menuArea
    }
    Component.onCompleted: {
        if (root.visibility !== Window.Maximized)
            root.restoreGeometry();
        root.showSelected();
    }
    onSelectedChanged: root.showSelected()
    onBackgroundViewChanged: {
        if (!root.selected)
            root.showSelected();
    }
    onClosing: root.storeGeometry()

    RowLayout {
        anchors.fill: parent
        spacing: 0
        Keys.forwardTo: [mainArea.item]

        Loader {
            id: mainArea

            Layout.fillWidth: true
            Layout.fillHeight: true
            onLoaded: (item as Item).forceActiveFocus()
        }
        VeskTabBar {
            Layout.preferredWidth: 240
            Layout.fillHeight: true
            dialogs: sourceDialogs
        }
    }

    SourceDialogs {
        id: sourceDialogs
    }
    DialogLoader {
        id: takesDeleteAll

        sourceComponent: TakesDeleteAllDialog {
            camera: root.shownCamera
        }
    }
    SsdTakeOpenLoader {
        id: ssdTakeOpen

        camera: root.shownCamera
    }
    SaveDialogLoader {
        id: saveDialog

        source: root.shownPlayback
    }
    TakeDeletion {
        id: takeDeletion

        take: root.shownTake
    }

    Component {
        id: aboutView

        AboutView {}
    }
    Component {
        id: saveProgressView

        SaveProgressView {}
    }
    Component {
        id: cameraView

        CameraControlView {
            camera: root.shownCamera
        }
    }
    Component {
        id: takeView

        TakeView {
            take: root.shownTake
        }
    }
    Component {
        id: ssdTakeView

        SsdTakeView {
            ssdTake: root.shownSsdTake
        }
    }
    Component {
        id: veskFileView

        VeskFileView {
            veskFile: root.shownVeskFile
        }
    }
    Component {
        id: aboutMenuBar

        AboutMenuBar {
            dialogs: sourceDialogs
        }
    }
    Component {
        id: cameraMenuBar

        CameraMenuBar {
            camera: root.shownCamera
            dialogs: sourceDialogs
            deleteAllDialog: takesDeleteAll
            ssdTakeOpenDialog: ssdTakeOpen
        }
    }
    Component {
        id: takeMenuBar

        TakeMenuBar {
            dialogs: sourceDialogs
            saveDialog: saveDialog
            deletion: takeDeletion
        }
    }
    Component {
        id: ssdTakeMenuBar

        SsdTakeMenuBar {
            ssdTake: root.shownSsdTake
            dialogs: sourceDialogs
            saveDialog: saveDialog
        }
    }
    Component {
        id: veskFileMenuBar

        VeskFileMenuBar {
            veskFile: root.shownVeskFile
            dialogs: sourceDialogs
            saveDialog: saveDialog
        }
    }
}
