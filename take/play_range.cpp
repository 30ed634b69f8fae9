#include "take/play_range.h"

qint64 PlayRange::clamped(qint64 fr) const
{
    if (isBefore(fr))
        return aFr;
    return isBehind(fr) ? bFr : fr;
}

qint64 PlayRange::wrapped(qint64 fr) const
{
    if (isBefore(fr))
        return bFr;
    return isBehind(fr) ? aFr : fr;
}

qint64 PlayRange::clampedA(qint64 fr) const
{
    if (fr < firstFr)
        return firstFr;
    return isBehind(fr) ? bFr : fr;
}

qint64 PlayRange::clampedB(qint64 fr) const
{
    if (isBefore(fr))
        return aFr;
    return fr > lastFr ? lastFr : fr;
}
