#include "take/play_clock.h"

#include "app/arithmetic.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace
{
constexpr double NsPerSecond = 1'000'000'000.0;
constexpr double MinRate = 0.1;
constexpr double MaxRate = 10'000'000.0;

struct VideoRate {
    double frRate;
    qint64 periodNs;
};

/** The NTSC family, a whole rate times 1000/1001: nobody types all of their decimals. */
constexpr VideoRate videoRates[] = {
    {59.94, 16'683'333},
    {29.97, 33'366'666},
    {23.98, 41'708'333},
    {23.976, 41'708'333},
};

PlayClock::Now monotonicClock()
{
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.nsecsElapsed(); };
}
} // namespace

PlayClock::PlayClock() : PlayClock(monotonicClock()) {}

PlayClock::PlayClock(Now now) : m_now(std::move(now)), m_restartedNs(m_now()) {}

void PlayClock::restart(qint64 fr)
{
    m_restartedNs = m_now();
    m_playStartFr = fr;
}

qint64 PlayClock::dueFr(qint64 periodNs, qint64 stride) const
{
    const qint64 steps = (m_now() - m_restartedNs) / periodNs;
    return saturatedSum(saturatedProduct(steps, stride), m_playStartFr);
}

qint64 playPeriodNs(double frRate)
{
    for (const VideoRate &row : videoRates) {
        if (fuzzyEqual(frRate, row.frRate))
            return row.periodNs;
    }
    // In this order of arguments no number at all (NaN) becomes the lowest rate.
    return qint64(NsPerSecond / std::max(MinRate, std::min(frRate, MaxRate)));
}
