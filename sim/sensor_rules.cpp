#include "sim/sensor_rules.h"

#include <algorithm>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;

qint64 floorDiv(qint64 a, qint64 b)
{
    return a / b - (a % b < 0 ? 1 : 0);
}

// In two steps, so that days of nanoseconds times the clock stay within 64 bits.
qint64 scale(qint64 value, qint64 from, qint64 to)
{
    const qint64 whole = floorDiv(value, from);
    return whole * to + (value - whole * from) * to / from;
}

} // namespace

int frClksMin(int width, int height)
{
    return height * (width / 8 + 20) + 400;
}

int expClksMaxFor(int frClks)
{
    return frClks - 600;
}

int snapExposure(qint64 wanted, int frClks)
{
    const qint64 limited = std::clamp<qint64>(wanted, expClksMin, expClksMaxFor(frClks));
    return static_cast<int>((limited - expClksOfst) / expClksMult * expClksMult + expClksOfst);
}

int partitionFrames(qint64 memoryBytes, int partitions, int width, int height)
{
    const qint64 record = metaSize + qint64(width) * height;
    return static_cast<int>(std::min<qint64>(memoryBytes / partitions / record, 1 << 30));
}

FrameClock::FrameClock(qint64 startNs, int frClks) : m_anchorNs(startNs), m_frClks(frClks) {}

qint64 FrameClock::frameAt(qint64 ns) const
{
    return m_anchorFrame + floorDiv(scale(ns - m_anchorNs, nsPerSecond, clkFreq), m_frClks);
}

qint64 FrameClock::timeNs(qint64 frame) const
{
    return m_anchorNs + scale((frame - m_anchorFrame) * m_frClks, clkFreq, nsPerSecond);
}

void FrameClock::retime(qint64 ns, int frClks)
{
    const qint64 frame = frameAt(ns);
    m_anchorNs = timeNs(frame);
    m_anchorFrame = frame;
    m_frClks = frClks;
}

} // namespace q4sim
