#include "sim/devices.h"

#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdlib>

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

void Lens::move(int step, qint64 nowNs)
{
    m_from = position(nowNs);
    m_startNs = nowNs;
    if (step == 32767)
        m_to = maxStep;
    else if (step == 0)
        m_to = 0;
    else
        m_to = static_cast<int>(std::clamp<qint64>(qint64(m_from) + step, 0, maxStep));
}

int Lens::position(qint64 nowNs) const
{
    const qint64 moved = (nowNs - m_startNs) / stepNs;
    if (moved >= std::abs(m_to - m_from))
        return m_to;
    return m_from + static_cast<int>(m_to > m_from ? moved : -moved);
}

double Lens::distance(qint64 nowNs) const
{
    const int at = position(nowNs);
    if (at == maxStep)
        return infinity;
    return std::round(38.0 * maxStep / (maxStep - at)) / 100.0;
}

void Shutter::move(bool close, qint64 nowNs)
{
    m_from = static_cast<State>(state(nowNs));
    m_to = close ? Closed : Open;
    m_startNs = nowNs;
}

int Shutter::state(qint64 nowNs) const
{
    return nowNs - m_startNs >= durationNs ? m_to : m_from;
}

Drive::Drive(bool present)
    : m_entries(present ? QList<Entry>{{QStringLiteral("drop-test.q4"), 3072320000, 1735732800},
                                       {QStringLiteral("Airbag 07.q4"), 1536160000, 1738411200},
                                       {QStringLiteral("wheel.q4"), 307232000, 1740830400}}
                        : QList<Entry>{}),
      m_name(present ? QStringLiteral("Q4SSD") : QString()), m_state(present ? Ready : Removed)
{
}

int Drive::state(qint64 nowNs) const
{
    if (m_state == Shutdown && nowNs - m_changeNs >= umountNs)
        return Off;
    if (m_state == Formatting && nowNs - m_changeNs >= formatNs)
        return Ready;
    return m_state;
}

quint64 Drive::sizeBytes() const
{
    return m_state == Removed ? 0 : 2000000000000ULL;
}

quint64 Drive::usedBytes(qint64 nowNs) const
{
    quint64 used = 0;
    for (const Entry &entry : m_entries)
        used += static_cast<quint64>(entry.size);
    return state(nowNs) == Ready ? used : 0;
}

QJsonArray Drive::listing(bool plainNames, qint64 nowNs) const
{
    QJsonArray list;
    if (state(nowNs) != Ready)
        return list;
    for (const Entry &entry : m_entries) {
        if (plainNames)
            list.append(entry.name);
        else
            list.append(QJsonObject{{"name", entry.name}, {"size", entry.size}, {"time", entry.time}});
    }
    return list;
}

bool Drive::umount(qint64 nowNs)
{
    if (state(nowNs) != Ready)
        return false;
    m_state = Shutdown;
    m_changeNs = nowNs;
    return true;
}

bool Drive::format(const QString &name, qint64 nowNs)
{
    if (state(nowNs) != Ready)
        return false;
    m_state = Formatting;
    m_changeNs = nowNs;
    m_entries.clear();
    m_name = name;
    return true;
}

} // namespace q4sim
