#pragma once

#include "sim/camera_model.h"
#include "sim/config.h"
#include "sim/fault.h"
#include "sim/request.h"

#include <QMutex>
#include <QObject>

#include <map>
#include <memory>

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
    /// and only the newest 50000 are kept.
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

    /// Fault for a request, one use of it taken off.
    Fault takeFault(Route route);
    Answer receive(const Request &request, Fault *fault);

    Config m_config;
    mutable QRecursiveMutex m_mutex; ///< over all below but the two network objects
    mutable CameraModel m_model;
    QList<Request> m_requests;
    std::map<Route, Fault> m_faults;
    std::unique_ptr<HttpFront> m_front;
    std::unique_ptr<Discovery> m_discovery;
};

} // namespace q4sim
