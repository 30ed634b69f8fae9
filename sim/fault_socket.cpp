#include "sim/fault_socket.h"

#include <QHostAddress>

#include <algorithm>

namespace q4sim
{

FaultSocket::FaultSocket(QObject *parent) : QTcpSocket(parent), m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, &FaultSocket::sendDrop);
}

void FaultSocket::drip(qint64 bytes, int ms)
{
    m_mode = Mode::Drip;
    m_bytes = std::max<qint64>(bytes, 1);
    m_timer.start(std::max(ms, 1));
}

void FaultSocket::closeAfter(qint64 bytes)
{
    m_mode = Mode::Close;
    m_bytes = bytes;
}

qint64 FaultSocket::writeData(const char *data, qint64 size)
{
    if (m_mode == Mode::Plain)
        return QTcpSocket::writeData(data, size);
    if (m_mode != Mode::Closed)
        m_held.append(data, size);
    if (m_mode == Mode::Close)
        sendStart();
    return size;
}

void FaultSocket::sendDrop()
{
    const QByteArray drop = m_held.first(std::min<qint64>(m_bytes, m_held.size()));
    m_held.remove(0, drop.size());
    QTcpSocket::writeData(drop.constData(), drop.size());
    if (m_held.isEmpty()) {
        m_timer.stop();
        m_mode = Mode::Plain;
    }
}

void FaultSocket::sendStart()
{
    const qsizetype header = m_held.indexOf("\r\n\r\n");
    if (header < 0 || m_held.size() < header + 4 + m_bytes)
        return;
    QTcpSocket::writeData(m_held.constData(), header + 4 + m_bytes);
    m_held.clear();
    m_mode = Mode::Closed;
    // The server is still inside of its write.
    QMetaObject::invokeMethod(this, [this] { disconnectFromHost(); }, Qt::QueuedConnection);
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
    m_open.removeAll(nullptr);
    m_open.append(socket);
    addPendingConnection(socket);
}

} // namespace q4sim
