#pragma once

#include <QIODevice>
#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace q4sim
{

class FrameRun;

/// A run of frames for the HTTP server to send: drawn as fast as the connection takes them. It breaks the
/// connection when the take is gone.
class FrameStream : public QIODevice
{
    Q_OBJECT

public:
    FrameStream(std::shared_ptr<FrameRun> run, QTcpSocket *socket);

    qint64 size() const override;

protected:
    qint64 readData(char *data, qint64 max) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    void breakWhenGone();

    std::shared_ptr<FrameRun> m_run;
    QPointer<QTcpSocket> m_socket; ///< the HTTP server owns it
    QTimer m_timer;
};

} // namespace q4sim
