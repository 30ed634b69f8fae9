#pragma once

#include "sim/sensor_rules.h"

#include <QList>

#include <memory>
#include <vector>

namespace q4sim
{

struct Footage;

/// The frame memory: its partitions, and what is recorded into them. Knows no network and no clock: every
/// operation is given the time, and advance() carries out what happened until then.
class Recorder
{
public:
    /// Numbers of acq/state.
    enum State { Standby = 1, Recording = 2, Triggered = 3 };

    /// A finished recording. Frame 0 of a take is the one at the trigger.
    struct Take {
        bool saved = false;
        bool locked = false;
        qint64 partitionFrames = 0;
        qint64 firstFrame = 0; ///< on the take's own scale, 0 or below after a recording
        qint64 lastFrame = -1;
        std::shared_ptr<Footage> footage; ///< nobody else keeps it: it dies with the take
        qint64 count() const { return lastFrame - firstFrame + 1; }
    };

    explicit Recorder(int partitions);

    State state() const { return m_state; }
    int activeTake() const { return m_active; } ///< 1 and up; 0 in standby
    int partitionCount() const { return static_cast<int>(m_takes.size()); }
    const Take &take(int number) const { return m_takes[static_cast<size_t>(number - 1)]; }
    QList<int> savedTakes() const;
    QList<int> lockedTakes() const;
    void setLocked(int number, bool locked);

    /// Frames in the active partition, at most its size; 0 in standby.
    qint64 recordedFrames(qint64 nowFrame) const;
    /// Those of them from the trigger on.
    qint64 postTriggerFrames(qint64 nowFrame) const;

    // Each returns false, and changes nothing, when the state does not allow it.
    bool record(qint64 nowFrame);
    bool trigger(qint64 nowFrame, int postFrames, std::shared_ptr<Footage> footage);
    bool abort();
    bool remove(int number);                    ///< -1: all that are not locked
    bool partition(int count, qint64 nowFrame); ///< the takes are gone; a locked one prevents it

    /// Takes a take away, locked or not.
    void drop(int number);
    /// Puts a take into a free partition that does not record; 0: the first one. Returns the number, or 0.
    int place(int number, const Take &take);

    /// Size of the partitions that hold no take, from now on. A recording that runs begins anew.
    void setPartitionFrames(int frames, qint64 nowFrame);
    int partitionFrames() const { return m_frames; }

    /// Goes on with the next free partition after a take, instead of to standby.
    void setContinuous(bool on) { m_continuous = on; }

    /// Takes the free partitions in turn, instead of the first one each time.
    void setCyclic(bool on) { m_cyclic = on; }

    /// Ends a triggered recording whose last frame is complete.
    void advance(qint64 nowFrame);

private:
    int freePartition() const;
    void begin(int number, qint64 frame);

    std::vector<Take> m_takes;
    State m_state = Standby;
    int m_active = 0;
    int m_frames = 1;
    bool m_continuous = false;
    bool m_cyclic = false;
    int m_last = 0; ///< partition of the newest recording
    qint64 m_startFrame = 0;
    qint64 m_triggerFrame = 0;
    int m_postFrames = 0;
    std::shared_ptr<Footage> m_footage; ///< of the triggered take
};

} // namespace q4sim
