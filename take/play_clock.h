#pragma once

#include <QtTypes>

#include <functional>

/**
 * Tells which frame of a playing source is due. One monotonic clock runs from the last restart, so that the
 * jitter of whoever asks does not build up over a long take.
 */
class PlayClock
{
public:
    /** Nanoseconds since some moment; never goes back. */
    using Now = std::function<qint64()>;

    /** Runs on the system's monotonic clock. */
    PlayClock();
    explicit PlayClock(Now now);

    /** The clock starts anew, with this frame due. */
    void restart(qint64 fr);
    /** Frame due now: stride frames further for every whole clock step of periodNs since the restart. */
    qint64 dueFr(qint64 periodNs, qint64 stride) const;

private:
    Now m_now;
    qint64 m_restartedNs;
    qint64 m_playStartFr = 0;
};

/**
 * Length of a clock step in nanoseconds, 100 to 10^10, for a rate in frames per second. Rates beyond 0.1 and
 * 10^7 are limited to them. The video rates that are written with rounded decimals stand for fixed periods.
 */
qint64 playPeriodNs(double frRate);
