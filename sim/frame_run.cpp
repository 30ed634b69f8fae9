#include "sim/frame_run.h"

#include "sim/frame_record.h"
#include "sim/sensor_rules.h"

#include <algorithm>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
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
    m_allAlike = params.look == Look::Plain && params.changes.empty();
}

/// Into memory that connections can take without a copy: nobody may change it while they do.
void FrameRun::keepPicture()
{
    draw(m_first);
    const QByteArray picture = m_record.sliced(metaSize);
    const int handle = memfd_create("q4sim picture", MFD_CLOEXEC);
    if (handle != -1 &&
        (!m_picture.open(handle, QIODevice::ReadWrite | QIODevice::Unbuffered, QFile::AutoCloseHandle) ||
         m_picture.write(picture) != picture.size()))
        m_picture.close();
}

void FrameRun::cut(qint64 bytes)
{
    m_size -= std::clamp<qint64>(bytes, 0, m_size);
}

void FrameRun::draw(qint64 frame)
{
    if (!m_record.isEmpty() && m_drawn == frame)
        return;
    if (m_allAlike && !m_record.isEmpty())
        m_record.replace(0, metaSize, metadataBlock(m_times.timeNs(frame), m_times.yearOffset(), frame));
    else
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

qint64 FrameRun::send(int socket, qint64 at, qint64 max)
{
    if (m_allAlike && !m_picture.isOpen())
        keepPicture();
    const qint64 wanted = std::clamp<qint64>(m_size - at, 0, max);
    qint64 sent = 0;
    while (sent < wanted) {
        const qint64 part = sendPart(socket, at + sent, wanted - sent);
        if (part <= 0)
            break;
        sent += part;
    }
    return sent;
}

/// Of one frame; 0 or less when the connection takes nothing.
qint64 FrameRun::sendPart(int socket, qint64 at, qint64 max)
{
    const qint64 frame = m_first + at / m_recordSize;
    const qint64 from = at % m_recordSize;
    const qint64 part = std::min(m_recordSize - from, max);
    if (m_picture.isOpen() && from >= metaSize) {
        off_t offset = from - metaSize;
        return sendfile(socket, m_picture.handle(), &offset, size_t(part));
    }
    draw(frame);
    // Of a picture that is kept the pixels follow by themselves.
    const qint64 drawn = m_picture.isOpen() ? std::min(metaSize - from, part) : part;
    return ::send(socket, m_record.constData() + from, size_t(drawn),
                  MSG_NOSIGNAL | (drawn < max ? MSG_MORE : 0));
}

} // namespace q4sim
