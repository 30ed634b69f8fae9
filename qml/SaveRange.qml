import QtQml
import Vesk

/** The frames that a save takes, in the source's own numbering. */
QtObject {
    id: root

    required property PlaybackVeskObject source
    readonly property real firstFr: source?.firstFr.value ?? 0
    readonly property real lastFr: source?.lastFr.value ?? 0
    property real startFr: source?.aFr ?? 0
    property real frCnt: (source?.bFr ?? 0) - startFr + 1
    readonly property real endFr: startFr + frCnt - 1

    /** Tells the range as it is, also when it stayed the same: a field may show what was typed. */
    signal updated

    function clamped(fr, lowest, highest) {
        return Math.max(lowest, Math.min(fr, highest));
    }

    /** Brings a range into the frames that the source has; where its ends cross, startPriority decides. */
    function updateFrRange(start, end, startPriority) {
        if (!Number.isInteger(start))
            start = root.firstFr;
        if (!Number.isInteger(end))
            end = root.lastFr;
        if (startPriority) {
            start = root.clamped(start, root.firstFr, root.lastFr);
            end = root.clamped(end, start, root.lastFr);
        } else {
            end = root.clamped(end, root.firstFr, root.lastFr);
            start = root.clamped(start, root.firstFr, end);
        }
        root.startFr = start;
        root.frCnt = end - start + 1;
        root.updated();
    }
}
