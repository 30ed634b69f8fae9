#pragma once

#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

namespace q4sim
{

/// A connection whose answer can be spoilt on its way out: the HTTP server writes into it as ever, and the
/// socket sends what was written slowly, or only a part of it.
class FaultSocket : public QTcpSocket
{
    Q_OBJECT

public:
    explicit FaultSocket(QObject *parent = nullptr);

    /// From now on sends `bytes` bytes every `ms` milliseconds, until all that was written is sent.
    void drip(qint64 bytes, int ms);

    /// Sends the next answer's header and `bytes` bytes of its body, then closes.
    void closeAfter(qint64 bytes);

protected:
    qint64 writeData(const char *data, qint64 size) override;

private:
    void sendDrop();
    void sendStart();

    enum class Mode { Plain, Drip, Close, Closed };
    Mode m_mode = Mode::Plain;
    QByteArray m_held;
    qint64 m_bytes = 0;
    QTimer m_timer;
};

/// Makes a FaultSocket of every connection.
class FaultTcpServer : public QTcpServer
{
    Q_OBJECT

public:
    using QTcpServer::QTcpServer;

    /// The open connection from an address and port; null when there is none.
    FaultSocket *connection(const QHostAddress &address, quint16 port);

protected:
    void incomingConnection(qintptr handle) override;

private:
    QList<QPointer<FaultSocket>> m_open; ///< the HTTP server owns them
};

} // namespace q4sim
