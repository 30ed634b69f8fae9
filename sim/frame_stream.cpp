#include "sim/frame_stream.h"

#include "sim/fault_socket.h"
#include "sim/frame_run.h"

#include <algorithm>

namespace q4sim
{

namespace
{

constexpr int lookMs = 10;

} // namespace

FrameStream::FrameStream(std::shared_ptr<FrameRun> run, FaultSocket *socket)
    : m_run(std::move(run)), m_socket(socket), m_sent(socket->sendRun(m_run)), m_timer(this)
{
    // By time: the server would still write when it were done on one of the connection's signals, and a
    // client that reads nothing causes none.
    connect(&m_timer, &QTimer::timeout, this, &FrameStream::breakWhenGone);
    m_timer.start(lookMs);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 FrameStream::size() const
{
    return m_run->size();
}

qint64 FrameStream::readData(char *data, qint64 max)
{
    return m_sent ? std::min(max, m_run->size() - pos()) : m_run->read(pos(), data, max);
}

void FrameStream::breakWhenGone()
{
    if (!m_run->gone())
        return;
    m_timer.stop();
    if (m_socket)
        m_socket->abort();
}

} // namespace q4sim
