#include "sim/frame_run.h"

#include "sim/frame_record.h"
#include "sim/sensor_rules.h"

#include <algorithm>
#include <utility>

namespace q4sim
{

FrameRun::FrameRun(const std::shared_ptr<const Footage> &footage,
                   std::shared_ptr<const SceneRenderer> renderer, qint64 first, qint64 count)
    : m_footage(footage), m_renderer(std::move(renderer)), m_first(first)
{
    m_times.frRate = footage->frRate;
    m_times.triggerNs = footage->triggerNs;
    m_times.firstFrame = footage->firstFrame;
    const SceneParams &params = m_renderer->params();
    m_recordSize = metaSize + qint64(params.width) * params.height;
    m_size = count * m_recordSize;
}

void FrameRun::cut(qint64 bytes)
{
    m_size -= std::clamp<qint64>(bytes, 0, m_size);
}

void FrameRun::draw(qint64 frame)
{
    if (!m_record.isEmpty() && m_drawn == frame)
        return;
    m_record = frameRecord(*m_renderer, frame, m_times.timeNs(frame), m_times.yearOffset());
    m_drawn = frame;
}

qint64 FrameRun::read(qint64 at, char *data, qint64 max)
{
    const qint64 wanted = std::clamp<qint64>(m_size - at, 0, max);
    for (qint64 done = 0; done < wanted;) {
        draw(m_first + (at + done) / m_recordSize);
        const qint64 from = (at + done) % m_recordSize;
        const qint64 part = std::min(m_recordSize - from, wanted - done);
        std::copy_n(m_record.constData() + from, part, data + done);
        done += part;
    }
    return wanted;
}

QByteArray FrameRun::readAll()
{
    QByteArray all(m_size, Qt::Uninitialized);
    read(0, all.data(), m_size);
    return all;
}

} // namespace q4sim
