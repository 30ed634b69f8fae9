#pragma once

#include <QtGlobal>

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

/// Shutter: numbers of shtr/state.
class Shutter
{
public:
    enum State { Open = 0, Closed = 1, Fail = 2 };
    static constexpr qint64 durationNs = 200000000;

    explicit Shutter(bool fails) : m_fails(fails) {}

    void setFails(bool fails) { m_fails = fails; } ///< its next moves end in Fail; a good one mends that
    void move(bool close, qint64 nowNs);
    int state(qint64 nowNs) const;

private:
    bool m_fails;
    State m_from = Open;
    State m_to = Open;
    qint64 m_startNs = 0;
};

} // namespace q4sim
