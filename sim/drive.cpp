#include "sim/drive.h"

#include <algorithm>
#include <utility>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;
constexpr quint64 capacity = 2000000000000ULL; // bytes

qint64 durationNs(const Drive::Save &save)
{
    // Microseconds are fine enough and keep terabytes within 64 bits.
    return save.bytes / (Drive::bytesPerSecond / 1000000) * (nsPerSecond / 1000000);
}

} // namespace

Drive::Drive(Medium medium) : m_medium(Medium::None), m_state(Removed)
{
    insert(medium, 0);
    if (m_medium != Medium::None)
        m_changeNs = -insertNs - enableNs;
}

QList<Drive::Save> Drive::insert(Medium medium, qint64 nowNs)
{
    m_medium = medium;
    m_state = medium == Medium::None ? Removed : Insert;
    m_changeNs = nowNs;
    m_entries.clear();
    m_name.clear();
    const QList<Save> lost = std::exchange(m_saves, {});
    if (medium != Medium::Formatted)
        return lost;
    m_name = QStringLiteral("Q4SSD");
    m_entries = {{QStringLiteral("drop-test.q4"), 3072320000, 1735732800},
                 {QStringLiteral("Airbag 07.q4"), 1536160000, 1738411200},
                 {QStringLiteral("wheel.q4"), 307232000, 1740830400}};
    return lost;
}

int Drive::state(qint64 nowNs) const
{
    const qint64 since = nowNs - m_changeNs;
    if (m_state == Shutdown && since >= shutdownNs)
        return since < shutdownNs + powerDownNs ? PowerDown : Off;
    if (m_state == Formatting && since >= formatNs)
        return Ready;
    if (m_state != Insert || since < insertNs)
        return m_state;
    if (since < insertNs + enableNs)
        return Enable;
    if (m_medium == Medium::Formatted)
        return Ready;
    return m_medium == Medium::Blank ? Unformatted : Fail;
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

bool Drive::accepts(qint64 nowNs) const
{
    const int now = state(nowNs);
    return (now == Ready || now == Unformatted) && m_saves.isEmpty();
}

bool Drive::umount(qint64 nowNs)
{
    if (!accepts(nowNs))
        return false;
    m_state = Shutdown;
    m_changeNs = nowNs;
    return true;
}

bool Drive::format(const QString &name, qint64 nowNs)
{
    if (!accepts(nowNs))
        return false;
    m_medium = Medium::Formatted;
    m_state = Formatting;
    m_changeNs = nowNs;
    m_entries.clear();
    m_name = name;
    return true;
}

bool Drive::save(const Save &save, qint64 nowNs)
{
    if (state(nowNs) != Ready)
        return false;
    if (m_saves.isEmpty())
        m_saveNs = nowNs;
    m_saves.append(save);
    return true;
}

QList<Drive::Save> Drive::advance(qint64 nowNs)
{
    QList<Save> done;
    while (!m_saves.isEmpty() && nowNs - m_saveNs >= durationNs(m_saves.first())) {
        const Save save = m_saves.takeFirst();
        m_saveNs += durationNs(save);
        ++m_savesDone;
        m_entries.append({save.name, save.bytes, m_saveNs / nsPerSecond});
        done.append(save);
    }
    return done;
}

int Drive::progress(qint64 nowNs) const
{
    if (m_saves.isEmpty())
        return 0;
    const qint64 whole = std::max<qint64>(durationNs(m_saves.first()) / 100, 1);
    return static_cast<int>(std::clamp<qint64>((nowNs - m_saveNs) / whole, 0, 99));
}

QJsonObject Drive::object(qint64 nowNs) const
{
    const bool ready = state(nowNs) == Ready;
    quint64 used = 0;
    for (const Entry &entry : m_entries)
        used += static_cast<quint64>(entry.size);
    return {{"state", state(nowNs)},
            {"wr_state", m_saves.isEmpty() ? 0 : 1},
            {"wr_seq", m_savesDone},
            {"progress", progress(nowNs)},
            {"name", m_name},
            {"size", QString::number(m_medium == Medium::None ? 0 : capacity, 16)},
            {"used", QString::number(ready ? used : 0, 16)},
            {"open_takes", QJsonArray()}};
}

} // namespace q4sim
