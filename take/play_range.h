#pragma once

#include <QtTypes>

/**
 * The frames that a source holds and the markers between which it plays. Numbers are those of the camera:
 * frame 0 is the trigger frame, frames before it are negative. Markers that nobody has set stand at the ends
 * of the 64-bit scale.
 */
struct PlayRange {
    qint64 firstFr;
    qint64 lastFr;
    qint64 aFr;
    qint64 bFr;

    bool isBefore(qint64 fr) const { return fr < firstFr || fr < aFr; }
    bool isBehind(qint64 fr) const { return fr > lastFr || fr > bFr; }

    /** The nearer marker for a frame outside of the range: where the playhead may stand. */
    qint64 clamped(qint64 fr) const;
    /** The other marker for a frame outside of the range: where a loop goes on. */
    qint64 wrapped(qint64 fr) const;
    /** Where A may stand: at B when it was put behind it or behind the last frame. */
    qint64 clampedA(qint64 fr) const;
    /** Where B may stand: at A when it was put before it or before the first frame. */
    qint64 clampedB(qint64 fr) const;
};
