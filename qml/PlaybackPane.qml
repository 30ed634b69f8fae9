import QtQuick
import Vesk

/** A section of a playback's control bar. Whether it is unfolded is kept for all such bars together. */
CollapsiblePane {
    id: root

    required property string key
    property bool expandedAtFirst: true
    readonly property string settingsKey: "playback/" + key + "_pane_expanded"

    width: parent?.width ?? 0
    expanded: App.instance.setting(settingsKey, expandedAtFirst)
    Component.onDestruction: App.instance.setSetting(root.settingsKey, root.expanded)
}
