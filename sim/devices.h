#pragma once

#include <QJsonArray>
#include <QString>

// Parts of the camera that move by themselves. Each is told the time in ns and gives its state at it.
namespace q4sim
{

/// Black reference: bits of acq/bref_state.
class BlackReference
{
public:
    enum Bit { Invalid = 1, InProgress = 2, Full = 4 };
    explicit BlackReference(int slotCount) : m_slotCount(slotCount) {}

    int state(qint64 nowNs) const;
    bool start(qint64 nowNs);             ///< false while one runs and when no slot is free
    void invalidate() { m_stale = true; } ///< the sensor's settings have changed
    void freeSlots()
    {
        m_used = m_stale ? 0 : 1;
    } ///< the one in use stays; all takes that used a reference are gone
    static constexpr qint64 durationNs = 1000000000;

private:
    bool running(qint64 nowNs) const { return m_used > 0 && nowNs < m_startNs + durationNs; }

    int m_slotCount;
    int m_used = 0;
    bool m_stale = true; ///< none was taken since the settings changed
    qint64 m_startNs = 0;
};

/// Lens focus in motor steps, 0 nearest to maxStep at infinity.
class Lens
{
public:
    static constexpr int maxStep = 2000;
    static constexpr qint64 stepNs = 1000000; ///< time of one step
    static constexpr int infinity = 65535;    ///< as focus_dist

    void move(int step, qint64 nowNs); ///< 32767 to infinity, 0 to the minimum, others by so many steps
    int position(qint64 nowNs) const;
    double distance(qint64 nowNs) const; ///< metres, 0.38 and up, or infinity

private:
    int m_from = 400;
    int m_to = 400;
    qint64 m_startNs = 0;
};

/// Shutter: numbers of shtr/state.
class Shutter
{
public:
    enum State { Open = 0, Closed = 1 };
    static constexpr qint64 durationNs = 200000000;

    void move(bool close, qint64 nowNs);
    int state(qint64 nowNs) const;

private:
    State m_from = Open;
    State m_to = Open;
    qint64 m_startNs = 0;
};

/// The drive: numbers of ssd/state, and its recordings.
class Drive
{
public:
    enum State { Removed = 0, Ready = 3, Shutdown = 4, Off = 6, Formatting = 9 };
    static constexpr qint64 umountNs = 500000000;
    static constexpr qint64 formatNs = 2000000000;

    explicit Drive(bool present);

    int state(qint64 nowNs) const;
    QString name() const { return m_name; }
    quint64 sizeBytes() const;
    quint64 usedBytes(qint64 nowNs) const;
    QJsonArray listing(bool plainNames, qint64 nowNs) const; ///< objects, or names alone
    bool umount(qint64 nowNs);
    bool format(const QString &name, qint64 nowNs);

private:
    struct Entry {
        QString name;
        qint64 size;
        qint64 time;
    };
    QList<Entry> m_entries;
    QString m_name;
    State m_state;
    qint64 m_changeNs = 0;
};

} // namespace q4sim
