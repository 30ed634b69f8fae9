#pragma once

#include "sim/camera_model.h"
#include "sim/config.h"
#include "sim/fault.h"
#include "sim/request.h"

#include <QObject>

#include <map>
#include <memory>
#include <mutex>

namespace q4sim
{

class Discovery;
class HttpFront;

/// One simulated camera on the network.
///
///     auto clock = std::make_shared<q4sim::ManualClock>(1'760'000'000'000'000'000);
///     q4sim::Config config;
///     config.address = QHostAddress("127.0.1.1");
///     config.clock = clock;
///     q4sim::Camera camera(config);
///     QVERIFY2(camera.listen().isEmpty(), "cannot listen");
///     // ... let the program under test POST /rec and /trig ...
///     clock->advance(std::chrono::seconds(30));
///     QCOMPARE(camera.value("acq/saved_takes").toArray().size(), 1);
///     QCOMPARE(camera.requests("POST", "/rec").size(), 1);
///     camera.setFault(q4sim::Route::Status, {.kind = q4sim::FaultKind::Http500, .count = 1});
///
/// listen() and close() belong to the thread that the object lives on, which needs an event loop; all else
/// may be called from any thread. For a camera with a thread of its own see CameraThread.
class Camera : public QObject
{
    Q_OBJECT

public:
    explicit Camera(const Config &config, QObject *parent = nullptr);
    ~Camera() override;

    /// Starts to answer. Returns an empty text, or one sentence on what went wrong.
    QString listen();

    /// Stops to answer and closes every connection.
    void close();

    const Config &config() const { return m_config; }

    /// What was received, oldest first: all, or those of one method and path. The control path is left out,
    /// only the newest 50000 are kept, and a firmware upload stands there once it is complete, without its
    /// body.
    QList<Request> requests() const;
    QList<Request> requests(const QByteArray &method, const QString &path) const;
    void clearRequests();

    /// Spoils the answers of a kind of request from now on.
    void setFault(Route route, const Fault &fault);
    void clearFaults();

    /// The status document, or one value of it, without any fault.
    QJsonObject status() const;
    QJsonValue value(const QString &path) const;

    /// Shows a value whatever the camera does; Undefined ends that.
    void forceValue(const QString &path, const QJsonValue &value);
    void setTakeLocked(int number, bool locked);

    /// Makes a take at once, as if it had been recorded before. Returns its number, or 0 and one sentence in
    /// `error`.
    int makeTake(const TakeOrder &order, QString *error = nullptr);
    /// Takes a take away whether it is locked or not, as a fault of the camera would.
    void dropTake(int number);
    /// What GET of a partition's path shows of it, without any fault; empty for a number that is none.
    QJsonObject takeDescription(int number) const;
    /// What the frames of a take are made of, all 0 without the take; pixel() gives any of their bytes.
    SceneParams takeScene(int number) const;
    /// Time that a frame's metadata carries, ns since 1970; 0 without the take.
    qint64 takeFrameTimeNs(int number, qint64 frame) const;

    /// The same two of a recording on the drive, by the number that it was opened with.
    QJsonObject openTakeDescription(int number) const;
    SceneParams openTakeScene(int number) const;

    /// Does to the camera what a hand does: plugs, pulls and breaks. Each key is one thing:
    ///   "lens": "mount", "remove" or "fail"          "af_switch": 0 for autofocus, else manual
    ///   "shutter": "work" or "fail" at its next move "sync_fps": signal at the sync input, frames/s; 0: none
    ///   "ssd": "insert", "insert-blank", "insert-broken", "remove", "fail" (it works no more) or "full" (it
    ///     takes no further recording)
    ///   "ssd_close": number of a recording that the camera closes by itself
    ///   "lock", "unlock", "drop": number of a take  (drop: it is gone, locked or not)
    /// Returns an empty text, or one sentence on what makes no sense; then nothing is done.
    QString operate(const QJsonObject &order);

    /// The last firmware upload: "expected" and "received" bytes of the body, "complete", and when complete
    /// "error", and "file_name", "size" and "sha256" (hex) of the file.
    QJsonObject upload() const;

    /// What the live frame of this moment is made of; pixel() of both gives any of its bytes.
    SceneParams sceneParams() const;
    qint64 liveFrame() const;
    /// Time that a frame's metadata carries, ns since 1970.
    qint64 frameTimeNs(qint64 frame) const;

    /// Answers a request as if it had come over the network, without fault and log.
    Answer answer(const QByteArray &method, const QString &path, const QByteArray &body = {});

signals:
    /// From the camera's thread, before the request is carried out.
    void requestReceived(const q4sim::Request &request);

private:
    friend class HttpFront;

    /// Fault of a request while it comes in, or of its answer; one use of it taken off.
    Fault takeFault(const Request &request, bool arriving);
    Answer carryOut(const Request &request, const Fault &fault);
    Answer carryOutPulling(const Request &request, const Fault &fault);
    Answer receive(const Request &request, Fault *fault);
    void log(const Request &request);

    // A firmware upload on its way in; receive() ends it. One whose connection breaks is just not ended.
    Fault beginUpload(qint64 bodySize);
    void continueUpload(qint64 received);

    Config m_config;
    mutable std::recursive_mutex m_mutex; ///< over all below but the two network objects
    mutable CameraModel m_model;
    QList<Request> m_requests;
    std::map<Route, Fault> m_faults;
    bool m_divisorsKnown = false; ///< a status with the values that clients divide by has been sent
    std::unique_ptr<HttpFront> m_front;
    std::unique_ptr<Discovery> m_discovery;
};

} // namespace q4sim
