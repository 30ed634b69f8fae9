#pragma once

#include "tests/e2e/process.h"
#include "tests/sim/http_client.h"

/// The simulated camera as a process, and what it knows, asked over its own
/// port.
class CameraProcess
{
public:
    /// Starts it at 10.77.0.2 with 1000 frames a second and memory enough that a
    /// take goes on for almost a minute after its trigger. Gives one sentence on
    /// what went wrong, or nothing.
    QString start(const QStringList &options = {});

    QString address() const;

    /// Bodies of what was received, in order; for `path` see the camera's
    /// protocol ("/rec").
    QList<QByteArray> requests(const QByteArray &method, const QString &path);
    /// Paths of what was received by one method, in order.
    QStringList requestsOf(const QByteArray &method);
    /// Value of a request header of the first request of the camera's log.
    QString firstHeader(const QString &name);
    void forgetRequests();

    /// A value of the status document ("acq/state"), whatever faults are set.
    QJsonValue value(const QString &path);

    /// What came in as firmware: "size", "sha256", "file_name" and more.
    QJsonObject upload();

    bool put(const QString &path, const QByteArray &json);
    /// What another program might ask of it, "/rec".
    bool command(const QString &path, const QByteArray &json = "{}");
    /// `route` as in sim/fault.h, all of them for "*".
    bool setFault(const QString &route, const QString &kind);
    /// An order as in sim/fault.h.
    bool setFault(const QByteArray &order);
    /// Answers frames so much later.
    bool delayFrames(int ms);
    /// Sends so many bytes of frames every `ms`, in transfers that begin from now on.
    bool dripFrames(int ms, int bytes);
    bool clearFaults();
    /// An order as in sim/footage.h; the camera has that take at once.
    bool makeTake(const QByteArray &order);
    /// The trigger comes by a wire.
    bool trigger();
    /// Names of the recordings on its drive.
    QStringList recordings();
    bool force(const QString &path, const QByteArray &json);

private:
    Process m_process;
    HttpClient m_client{address()};
};
