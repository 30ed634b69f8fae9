#include "sim/fault_socket.h"

#include "sim/frame_run.h"

#include <QHostAddress>
#include <QRegularExpression>

#include <algorithm>
#include <limits>
#include <utility>

namespace q4sim
{

namespace
{

constexpr qsizetype headMax = 64 << 10;
constexpr qint64 bufferedMin = 4 << 10;

} // namespace

FaultSocket::FaultSocket(QObject *parent) : QTcpSocket(parent), m_timer(this), m_readTimer(this)
{
    connect(&m_timer, &QTimer::timeout, this, &FaultSocket::beginDrop);
    connect(&m_readTimer, &QTimer::timeout, this, &FaultSocket::readOn);
    // The first of all connections to the signal, and so called before the server takes the bytes away.
    connect(this, &QIODevice::readyRead, this, &FaultSocket::watchUpload);
}

bool FaultSocket::sendRun(std::shared_ptr<FrameRun> run)
{
    if (m_mode != Mode::Plain)
        return false;
    m_mode = Mode::Run;
    m_run = std::move(run);
    countNextAnswer(m_run->size());
    return true;
}

void FaultSocket::drip(qint64 bytes, int ms, qint64 bodySize)
{
    m_mode = Mode::Drip;
    m_bytes = std::max<qint64>(bytes, 1);
    m_dropLeft = 0;
    countNextAnswer(bodySize);
    m_timer.start(std::max(ms, 1));
}

void FaultSocket::closeAfter(qint64 bytes)
{
    m_mode = Mode::Close;
    m_bytes = bytes;
    m_left = -1;
}

qint64 FaultSocket::bytesToWrite() const
{
    const qint64 waiting = QTcpSocket::bytesToWrite() + m_held.size();
    if (m_mode == Mode::Closed || (m_mode == Mode::Run && waiting > 0))
        return std::numeric_limits<qint64>::max();
    return waiting;
}

qint64 FaultSocket::writeData(const char *data, qint64 size)
{
    if (m_mode == Mode::Plain)
        return QTcpSocket::writeData(data, size);
    if (m_mode == Mode::Run) {
        const qint64 ofBody = countAnswer(data, size);
        if (ofBody < size)
            QTcpSocket::writeData(data, size - ofBody);
        if (ofBody > 0)
            sendFrames(ofBody);
        return size;
    }
    if (m_mode != Mode::Closed)
        m_held.append(data, size);
    if (m_mode == Mode::Close)
        sendStart();
    if (m_mode == Mode::Drip) {
        countAnswer(data, size);
        sendDrop();
    }
    return size;
}

void FaultSocket::countNextAnswer(qint64 bodySize)
{
    m_bodyOfAnswer = bodySize;
    m_toWrite = -1;
    m_answerHead.clear();
}

/// The server makes a long answer bit by bit: that nothing is held does not mean that it is complete.
/// Returns how many of the bytes belong to the body.
qint64 FaultSocket::countAnswer(const char *data, qint64 size)
{
    qint64 ofBody = size;
    if (m_toWrite < 0) {
        m_answerHead.append(data, size);
        const qsizetype end = m_answerHead.indexOf("\r\n\r\n");
        if (end < 0)
            return 0;
        m_toWrite = m_bodyOfAnswer;
        ofBody = m_answerHead.size() - end - 4;
    }
    ofBody = std::min(ofBody, m_toWrite);
    m_toWrite -= ofBody;
    return ofBody;
}

/// The next bytes of the run. The last of them, and what the network does not take at once, go through the
/// buffer: when that is empty the server makes the next.
void FaultSocket::sendFrames(qint64 size)
{
    const qint64 at = m_run->size() - m_toWrite - size;
    const bool waits = QTcpSocket::bytesToWrite() > 0;
    const qint64 sent =
        waits ? 0 : m_run->send(int(socketDescriptor()), at, size - std::min(size, bufferedMin));
    QByteArray rest(size - sent, Qt::Uninitialized);
    m_run->read(at + sent, rest.data(), rest.size());
    QTcpSocket::writeData(rest.constData(), rest.size());
    if (m_toWrite > 0)
        return;
    m_mode = Mode::Plain;
    m_run.reset();
}

void FaultSocket::beginDrop()
{
    m_dropLeft = m_bytes;
    sendDrop();
}

void FaultSocket::sendDrop()
{
    const QByteArray drop = m_held.first(std::min<qint64>(m_dropLeft, m_held.size()));
    m_held.remove(0, drop.size());
    m_dropLeft -= drop.size();
    QTcpSocket::writeData(drop.constData(), drop.size());
    if (m_held.isEmpty() && m_toWrite == 0) {
        m_timer.stop();
        m_mode = Mode::Plain;
    }
}

void FaultSocket::sendStart()
{
    const qsizetype header = m_left < 0 ? m_held.indexOf("\r\n\r\n") : 0;
    if (header < 0)
        return;
    if (m_left < 0)
        m_left = header + 4 + m_bytes;
    const qint64 part = std::min<qint64>(m_left, m_held.size());
    QTcpSocket::writeData(m_held.constData(), part);
    m_held.remove(0, part);
    m_left -= part;
    if (m_left > 0)
        return;
    m_held.clear();
    m_mode = Mode::Closed;
    // The server is still inside of its write.
    QMetaObject::invokeMethod(this, [this] { disconnectFromHost(); }, Qt::QueuedConnection);
}

void FaultSocket::slowUpload(qint64 bytes, int ms)
{
    m_step = std::max<qint64>(bytes, 1);
    setReadBufferSize(bytesAvailable());
    m_readTimer.start(std::max(ms, 1));
}

void FaultSocket::watchUpload()
{
    // The server has a transaction open from the first byte of a request to the last.
    if (!isTransactionStarted()) {
        m_head.clear();
        m_bodySize = m_breakAt = -1;
        m_received = 0;
    }
    qint64 fresh = bytesAvailable();
    if (m_bodySize < 0 && !findUpload(&fresh))
        return;
    m_received = std::min(m_received + fresh, m_bodySize);
    emit uploadContinued(m_received);
    if (m_received == m_bodySize && m_readTimer.isActive()) {
        m_readTimer.stop();
        setReadBufferSize(0);
    }
    if (m_breakAt < 0 || m_received < m_breakAt)
        return;
    // The server must not see the bytes behind the break.
    disconnect(this, &QIODevice::readyRead, nullptr, nullptr);
    abort();
}

// Takes the bytes of the head off `fresh`.
bool FaultSocket::findUpload(qint64 *fresh)
{
    if (m_head.size() > headMax)
        return false;
    const qsizetype known = m_head.size();
    m_head += peek(headMax);
    static const QRegularExpression form(
        QStringLiteral("^POST /q4fw .*?\\r\\ncontent-length: *(\\d{1,15})\\r\\n.*?(?<=\\r\\n)\\r\\n"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    if (!m_head.startsWith("POST /q4fw "))
        return false;
    const QRegularExpressionMatch match = form.match(QString::fromLatin1(m_head));
    if (!match.hasMatch())
        return false;
    m_bodySize = match.captured(1).toLongLong();
    *fresh -= match.capturedEnd() - known;
    emit uploadBegan(m_bodySize);
    return true;
}

void FaultSocket::readOn()
{
    // All of a request stays in the buffer until the server ends its transaction.
    setReadBufferSize(readBufferSize() + m_step);
}

FaultSocket *FaultTcpServer::connection(const QHostAddress &address, quint16 port)
{
    m_open.removeAll(nullptr);
    for (FaultSocket *socket : std::as_const(m_open)) {
        if (socket->peerPort() == port && socket->peerAddress() == address)
            return socket;
    }
    return nullptr;
}

void FaultTcpServer::incomingConnection(qintptr handle)
{
    auto *socket = new FaultSocket(this);
    socket->setSocketDescriptor(handle);
    // What the network keeps for the camera counts as sent to the client, and comes in at once. With little
    // of it an upload breaks where it is told to, and the client feels a slow camera early.
    socket->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 64 << 10);
    m_open.removeAll(nullptr);
    m_open.append(socket);
    emit opened(socket);
    addPendingConnection(socket);
}

} // namespace q4sim
