#include "sim/frame_stream.h"

#include "sim/fault_socket.h"
#include "sim/frame_run.h"

namespace q4sim
{

namespace
{

constexpr qint64 backlogMax = 2 << 20; // bytes
constexpr int lookMs = 10;

} // namespace

FrameStream::FrameStream(std::shared_ptr<FrameRun> run, FaultSocket *socket)
    : m_run(std::move(run)), m_socket(socket), m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, &FrameStream::look);
    connect(socket, &QIODevice::bytesWritten, this, &FrameStream::look);
    m_timer.start(lookMs);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 FrameStream::size() const
{
    return m_run->size();
}

qint64 FrameStream::bytesAvailable() const
{
    const bool full = !m_socket || m_socket->backlog() >= backlogMax;
    return full ? 0 : size() - pos();
}

qint64 FrameStream::readData(char *data, qint64 max)
{
    return m_run->gone() ? 0 : m_run->read(pos(), data, max);
}

void FrameStream::look()
{
    if (m_run->gone() && m_socket) {
        m_timer.stop();
        m_socket->abort();
    } else if (bytesAvailable() > 0) {
        emit readyRead();
    }
}

} // namespace q4sim
