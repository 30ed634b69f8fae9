#pragma once

#include <QIODevice>
#include <QPointer>
#include <QTimer>

#include <memory>

namespace q4sim
{

class FaultSocket;
class FrameRun;

/// A run of frames for the HTTP server to send. It gives no more than the connection gets rid of, so that a
/// client that reads slowly costs no memory, and breaks the connection when the take is gone.
class FrameStream : public QIODevice
{
    Q_OBJECT

public:
    FrameStream(std::shared_ptr<FrameRun> run, FaultSocket *socket);

    bool isSequential() const override { return false; }
    qint64 size() const override;
    qint64 bytesAvailable() const override; ///< 0 while the connection is full
    bool atEnd() const override { return pos() >= size(); }

protected:
    qint64 readData(char *data, qint64 max) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    void look();

    std::shared_ptr<FrameRun> m_run;
    QPointer<FaultSocket> m_socket; ///< the HTTP server owns it
    QTimer m_timer;
};

} // namespace q4sim
