#include "sim/devices.h"

namespace q4sim
{

int BlackReference::state(qint64 nowNs) const
{
    const int full = m_used >= m_slotCount ? Full : 0;
    if (running(nowNs))
        return Invalid | InProgress | full;
    return full | (m_stale ? Invalid : 0);
}

bool BlackReference::start(qint64 nowNs)
{
    if (running(nowNs) || m_used >= m_slotCount)
        return false;
    ++m_used;
    m_stale = false;
    m_startNs = nowNs;
    return true;
}

void Shutter::move(bool close, qint64 nowNs)
{
    m_from = static_cast<State>(state(nowNs));
    m_to = m_fails ? Fail : (close ? Closed : Open);
    m_startNs = nowNs;
}

int Shutter::state(qint64 nowNs) const
{
    return nowNs - m_startNs >= durationNs ? m_to : m_from;
}

} // namespace q4sim
