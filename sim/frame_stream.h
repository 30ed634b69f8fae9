#pragma once

#include <QIODevice>
#include <QPointer>
#include <QTimer>

#include <memory>

namespace q4sim
{

class FaultSocket;
class FrameRun;

/// A run of frames for the HTTP server to send: drawn as fast as the connection takes them, unless the
/// connection sends the run by itself, which needs no more than the size. It breaks the connection when the
/// take is gone.
class FrameStream : public QIODevice
{
    Q_OBJECT

public:
    FrameStream(std::shared_ptr<FrameRun> run, FaultSocket *socket);

    qint64 size() const override;

protected:
    qint64 readData(char *data, qint64 max) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    void breakWhenGone();

    std::shared_ptr<FrameRun> m_run;
    QPointer<FaultSocket> m_socket; ///< the HTTP server owns it
    bool m_sent;                    ///< by the connection
    QTimer m_timer;
};

} // namespace q4sim
