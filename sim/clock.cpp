#include "sim/clock.h"

using namespace std::chrono;

namespace q4sim
{

Clock::~Clock() = default;

SystemClock::SystemClock()
    : m_startNs(duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count()),
      m_start(steady_clock::now())
{
}

qint64 SystemClock::nowNs() const
{
    return m_startNs + duration_cast<nanoseconds>(steady_clock::now() - m_start).count();
}

ManualClock::ManualClock(qint64 startNs) : m_nowNs(startNs) {}

qint64 ManualClock::nowNs() const
{
    return m_nowNs;
}

void ManualClock::advance(nanoseconds step)
{
    if (step.count() > 0)
        m_nowNs += step.count();
}

} // namespace q4sim
