#pragma once

#include <QtGlobal>

#include <atomic>
#include <chrono>

namespace q4sim
{

/// Where a camera takes its time from. Implementations are safe to call from any thread.
class Clock
{
public:
    virtual ~Clock();

    /// Nanoseconds since 1970-01-01 00:00 UTC; never runs backwards.
    virtual qint64 nowNs() const = 0;
};

/// The machine's time of day at construction, carried on by its steady clock.
class SystemClock : public Clock
{
public:
    SystemClock();
    qint64 nowNs() const override;

private:
    qint64 m_startNs;
    std::chrono::steady_clock::time_point m_start;
};

/// A clock that stands still until it is moved, so that a test decides how long a recording lasts.
class ManualClock : public Clock
{
public:
    explicit ManualClock(qint64 startNs);
    qint64 nowNs() const override;

    /// Moves the clock forwards; negative steps are ignored.
    void advance(std::chrono::nanoseconds step);

private:
    std::atomic<qint64> m_nowNs;
};

} // namespace q4sim
