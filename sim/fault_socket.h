#pragma once

#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace q4sim
{

class FrameRun;

/// A connection whose traffic can be spoilt below the HTTP server. Of an answer it sends what the server
/// wrote slowly, or only a part of it. A firmware upload it reads slowly, or breaks in the middle; it counts
/// its bytes as they come in, which the server does not tell of before it has them all. A run of frames it
/// sends by itself, past the buffers as far as the network takes it, which spares the processor copies.
class FaultSocket : public QTcpSocket
{
    Q_OBJECT

public:
    explicit FaultSocket(QObject *parent = nullptr);

    /// Sends a run as the body of the next answer; of what the server writes there, only the size counts.
    /// False when the answer is to be spoilt: then the server has to write the frames.
    bool sendRun(std::shared_ptr<FrameRun> run);

    /// Sends the next answer, whose body has `bodySize` bytes, at `bytes` bytes every `ms` milliseconds.
    void drip(qint64 bytes, int ms, qint64 bodySize);

    /// Sends the next answer's header and `bytes` bytes of its body, then closes.
    void closeAfter(qint64 bytes);

    /// With what a fault holds back, as the HTTP server goes by it: it makes no more of a long answer while
    /// much of it waits. Without end while any of a run waits, and of a closed connection.
    qint64 bytesToWrite() const override;

    /// Breaks the connection when `bytes` bytes of the upload's body are in. Call it at uploadBegan().
    void breakUploadAt(qint64 bytes) { m_breakAt = bytes; }

    /// Reads `bytes` bytes of the upload every `ms` milliseconds. Call it at uploadBegan().
    void slowUpload(qint64 bytes, int ms);

signals:
    void uploadBegan(qint64 bodySize);
    void uploadContinued(qint64 received); ///< bytes of the body until now

protected:
    qint64 writeData(const char *data, qint64 size) override;

private:
    void watchUpload();
    bool findUpload(qint64 *fresh);
    void readOn();
    void countNextAnswer(qint64 bodySize);
    qint64 countAnswer(const char *data, qint64 size);
    void sendFrames(qint64 size);
    void beginDrop();
    void sendDrop();
    void sendStart();

    enum class Mode { Plain, Run, Drip, Close, Closed };
    Mode m_mode = Mode::Plain;
    QByteArray m_held;
    qint64 m_bytes = 0;
    qint64 m_dropLeft = 0; ///< bytes that may still be sent before the next drop
    qint64 m_left = -1; ///< bytes until the connection closes; -1 while the answer's header is not complete
    QByteArray m_answerHead; ///< of an answer that drips or is a run, until it is complete
    qint64 m_bodyOfAnswer = 0;
    qint64 m_toWrite = -1; ///< bytes of its body that the server has yet to write; -1 as with m_left
    std::shared_ptr<FrameRun> m_run;
    QTimer m_timer;

    QByteArray m_head;      ///< what has come in of a request, until it is known to be an upload or not
    qint64 m_bodySize = -1; ///< of the upload that comes in; -1: none does
    qint64 m_received = 0;
    qint64 m_breakAt = -1; ///< -1: does not break
    qint64 m_step = 0;     ///< bytes that are read at a time
    QTimer m_readTimer;
};

/// Makes a FaultSocket of every connection.
class FaultTcpServer : public QTcpServer
{
    Q_OBJECT

public:
    using QTcpServer::QTcpServer;

    /// The open connection from an address and port; null when there is none.
    FaultSocket *connection(const QHostAddress &address, quint16 port);

signals:
    void opened(q4sim::FaultSocket *socket);

protected:
    void incomingConnection(qintptr handle) override;

private:
    QList<QPointer<FaultSocket>> m_open; ///< the HTTP server owns them
};

} // namespace q4sim
