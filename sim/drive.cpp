#include "sim/drive.h"

#include <algorithm>
#include <utility>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;
constexpr auto extension = ".vesk";

} // namespace

Drive::Drive(qint64 bytes, qint64 bytesPerSecond)
    : m_wholeBytes(bytes), m_bytes(bytes), m_bytesPerSecond(bytesPerSecond)
{
}

void Drive::mount(Medium medium)
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
    m_bytes = m_wholeBytes;
    const bool formatted = medium == Medium::Formatted;
    m_name = formatted ? QStringLiteral("Q4SSD") : QString();
    m_recordings = formatted ? m_initial : QList<Recording>();
    return stop();
}

QList<Drive::Save> Drive::fail()
{
    m_state = Fail;
    return stop();
}

QList<Drive::Save> Drive::stop()
{
    m_open.clear();
    return std::exchange(m_saves, {});
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
    for (const Recording &recording : m_recordings) {
        if (plainNames)
            list.append(recording.name);
        else
            list.append(
                QJsonObject{{"name", recording.name}, {"size", recording.size}, {"time", recording.time}});
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
    stop();
    return true;
}

bool Drive::format(const QString &name, qint64 nowNs)
{
    if (!accepts(nowNs))
        return false;
    m_medium = Medium::Formatted;
    m_state = Formatting;
    m_changeNs = nowNs;
    m_recordings.clear();
    m_bytes = m_wholeBytes;
    m_name = name;
    stop();
    return true;
}

int Drive::open(const QString &name)
{
    const auto found = std::find_if(m_recordings.begin(), m_recordings.end(),
                                    [&](const Recording &recording) { return recording.name == name; });
    if (found == m_recordings.end())
        return 0;
    // Its end is the end of this number's frames alone.
    Recording opened = *found;
    opened.footage = std::make_shared<Footage>(*found->footage);
    m_open[++m_opened] = opened;
    return m_opened;
}

bool Drive::close(int number)
{
    return m_open.erase(number) > 0;
}

const Drive::Recording *Drive::openTake(int number) const
{
    const auto found = m_open.find(number);
    return found == m_open.end() ? nullptr : &found->second;
}

QString Drive::freeName(const QString &name) const
{
    const auto taken = [this](const QString &full) {
        const auto named = [&](const Recording &recording) { return recording.name == full; };
        return std::any_of(m_recordings.begin(), m_recordings.end(), named) ||
               std::any_of(m_saves.begin(), m_saves.end(),
                           [&](const Save &save) { return named(save.recording); });
    };
    QString full = name + QLatin1StringView(extension);
    for (int number = 2; taken(full); ++number)
        full = QStringLiteral("%1 (%2)%3").arg(name).arg(number).arg(QLatin1StringView(extension));
    return full;
}

qint64 Drive::taken() const
{
    qint64 bytes = 0;
    for (const Recording &recording : m_recordings)
        bytes += recording.size;
    for (const Save &save : m_saves)
        bytes += save.recording.size;
    return bytes;
}

bool Drive::save(const Save &save, qint64 nowNs)
{
    if (state(nowNs) != Ready || save.recording.size > m_bytes - taken())
        return false;
    if (m_saves.isEmpty())
        m_saveNs = nowNs;
    m_saves.append(save);
    return true;
}

bool Drive::writes(int take) const
{
    return std::any_of(m_saves.begin(), m_saves.end(),
                       [take](const Save &save) { return save.take == take; });
}

QList<Drive::Save> Drive::advance(qint64 nowNs)
{
    QList<Save> done;
    while (!m_saves.isEmpty() && nowNs - m_saveNs >= durationNs(m_saves.first())) {
        Save save = m_saves.takeFirst();
        m_saveNs += durationNs(save);
        ++m_savesDone;
        save.recording.time = m_saveNs / nsPerSecond;
        m_recordings.append(save.recording);
        done.append(save);
    }
    return done;
}

qint64 Drive::durationNs(const Save &save) const
{
    // Microseconds are fine enough and keep terabytes within 64 bits.
    return save.recording.size / (m_bytesPerSecond / 1000000) * (nsPerSecond / 1000000);
}

int Drive::progress(qint64 nowNs) const
{
    if (state(nowNs) == Formatting)
        return static_cast<int>((nowNs - m_changeNs) * 100 / formatNs);
    if (m_saves.isEmpty())
        return 0;
    const qint64 whole = std::max<qint64>(durationNs(m_saves.first()) / 100, 1);
    return static_cast<int>(std::clamp<qint64>((nowNs - m_saveNs) / whole, 0, 99));
}

QJsonObject Drive::object(qint64 nowNs) const
{
    qint64 used = 0;
    for (const Recording &recording : m_recordings)
        used += recording.size;
    QJsonArray open;
    for (const auto &[number, recording] : m_open)
        open.append(number);
    return {{"state", state(nowNs)},
            {"wr_state", m_saves.isEmpty() ? 0 : 1},
            {"wr_seq", m_savesDone},
            {"progress", progress(nowNs)},
            {"name", m_name},
            {"size", QString::number(m_medium == Medium::None ? 0 : m_bytes, 16)},
            {"used", QString::number(state(nowNs) == Ready ? used : 0, 16)},
            {"open_takes", open}};
}

} // namespace q4sim
