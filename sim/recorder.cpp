#include "sim/recorder.h"

#include "sim/footage.h"

#include <algorithm>

namespace q4sim
{

Recorder::Recorder(int partitions) : m_takes(static_cast<size_t>(partitions)) {}

QList<int> Recorder::savedTakes() const
{
    QList<int> numbers;
    for (int n = 1; n <= partitionCount(); ++n) {
        if (take(n).saved)
            numbers.append(n);
    }
    return numbers;
}

QList<int> Recorder::lockedTakes() const
{
    QList<int> numbers;
    for (int n = 1; n <= partitionCount(); ++n) {
        if (take(n).locked)
            numbers.append(n);
    }
    return numbers;
}

void Recorder::setLocked(int number, bool locked)
{
    if (number >= 1 && number <= partitionCount())
        m_takes[static_cast<size_t>(number - 1)].locked = locked;
}

qint64 Recorder::recordedFrames(qint64 nowFrame) const
{
    if (m_state == Standby)
        return 0;
    return std::clamp<qint64>(nowFrame - m_startFrame, 0, m_frames);
}

qint64 Recorder::postTriggerFrames(qint64 nowFrame) const
{
    if (m_state != Triggered)
        return 0;
    return std::clamp<qint64>(nowFrame - m_triggerFrame, 0, m_postFrames);
}

int Recorder::freePartition() const
{
    const int before = m_cyclic ? m_last : 0;
    for (int step = 0; step < partitionCount(); ++step) {
        const int number = (before + step) % partitionCount() + 1;
        if (!take(number).saved)
            return number;
    }
    return 0;
}

void Recorder::begin(int number, qint64 frame)
{
    m_active = number;
    m_startFrame = frame;
    m_state = number ? Recording : Standby;
    if (number)
        m_last = number;
}

bool Recorder::record(qint64 nowFrame)
{
    const int number = freePartition();
    if (m_state != Standby || number == 0)
        return false;
    begin(number, nowFrame);
    return true;
}

bool Recorder::trigger(qint64 nowFrame, int postFrames, std::shared_ptr<Footage> footage)
{
    if (m_state != Recording)
        return false;
    m_triggerFrame = nowFrame;
    m_postFrames = postFrames;
    m_footage = std::move(footage);
    m_state = Triggered;
    return true;
}

bool Recorder::abort()
{
    if (m_state == Standby)
        return false;
    begin(0, 0);
    return true;
}

bool Recorder::remove(int number)
{
    if (number == -1) {
        for (Take &take : m_takes) {
            if (!take.locked)
                take = {};
        }
        return true;
    }
    if (number < 1 || number > partitionCount() || !take(number).saved || take(number).locked)
        return false;
    m_takes[static_cast<size_t>(number - 1)] = {};
    return true;
}

bool Recorder::partition(int count, qint64 nowFrame)
{
    if (m_state == Triggered || !lockedTakes().isEmpty() || count < 1)
        return false;
    m_takes.assign(static_cast<size_t>(count), {});
    m_last = 0;
    if (m_state == Recording)
        begin(1, nowFrame);
    return true;
}

void Recorder::drop(int number)
{
    if (number >= 1 && number <= partitionCount())
        m_takes[static_cast<size_t>(number - 1)] = {};
}

int Recorder::place(int number, const Take &take)
{
    for (int n = 1; n <= partitionCount(); ++n) {
        const bool wanted = number == 0 || n == number;
        if (!wanted || n == m_active || this->take(n).saved)
            continue;
        m_takes[static_cast<size_t>(n - 1)] = take;
        return n;
    }
    return 0;
}

void Recorder::setPartitionFrames(int frames, qint64 nowFrame)
{
    m_frames = frames;
    if (m_state == Recording)
        begin(m_active, nowFrame);
}

void Recorder::advance(qint64 nowFrame)
{
    const qint64 end = m_triggerFrame + m_postFrames;
    if (m_state != Triggered || nowFrame < end)
        return;
    Take &take = m_takes[static_cast<size_t>(m_active - 1)];
    take.saved = true;
    take.partitionFrames = m_frames;
    // The ring has overwritten what is older than one partition before the end.
    take.firstFrame = std::max(m_startFrame, end - m_frames) - m_triggerFrame;
    take.lastFrame = m_postFrames - 1;
    take.footage = std::move(m_footage);
    take.footage->firstFrame = take.firstFrame;
    begin(m_continuous ? freePartition() : 0, end);
}

} // namespace q4sim
