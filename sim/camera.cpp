#include "sim/camera.h"

#include "sim/control.h"
#include "sim/discovery.h"
#include "sim/frame_run.h"
#include "sim/http_front.h"
#include "sim/value_table.h"

namespace q4sim
{

namespace
{

constexpr qsizetype keptRequests = 50000;

Config withClock(Config config)
{
    if (!config.clock)
        config.clock = std::make_shared<SystemClock>();
    return config;
}

// A faulty configuration is told by listen(); the model needs a sound one.
Config sound(const Config &config)
{
    if (configError(config).isEmpty())
        return config;
    Config plain;
    plain.clock = config.clock;
    return plain;
}

// A firmware file is too large to be kept.
Request withoutFile(const Request &request)
{
    Request shown = request;
    if (routeOf(request) == Route::Q4fw)
        shown.body.clear();
    return shown;
}

} // namespace

Camera::Camera(const Config &config, QObject *parent)
    : QObject(parent), m_config(withClock(config)), m_model(sound(m_config))
{
}

Camera::~Camera()
{
    close();
}

QString Camera::listen()
{
    close();
    if (const QString text = configError(m_config); !text.isEmpty())
        return text;
    if (!m_model.startError().isEmpty())
        return m_model.startError();
    auto front = std::make_unique<HttpFront>(*this);
    if (const QString text = front->listen(m_config.address, m_config.port); !text.isEmpty())
        return text;
    if (m_config.discovery) {
        auto discovery = std::make_unique<Discovery>();
        if (const QString text = discovery->listen(m_config.address); !text.isEmpty())
            return text;
        m_discovery = std::move(discovery);
    }
    m_front = std::move(front);
    return {};
}

void Camera::close()
{
    m_discovery.reset();
    m_front.reset();
}

QList<Request> Camera::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

QList<Request> Camera::requests(const QByteArray &method, const QString &path) const
{
    QList<Request> found;
    const QList<Request> all = requests();
    for (const Request &request : all) {
        if (request.method == method && request.path == path)
            found.append(request);
    }
    return found;
}

void Camera::clearRequests()
{
    const std::lock_guard lock(m_mutex);
    m_requests.clear();
}

void Camera::setFault(Route route, const Fault &fault)
{
    const std::lock_guard lock(m_mutex);
    m_faults[route] = fault;
}

void Camera::clearFaults()
{
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
}

Fault Camera::takeFault(const Request &request, bool arriving)
{
    const auto found = m_faults.find(routeOf(request));
    if (found == m_faults.end())
        return {};
    const Fault fault = found->second;
    if (fault.count == 0 || spoilsArrival(fault.kind) != arriving || !concerns(fault, request))
        return {};
    if (fault.count > 0)
        --found->second.count;
    return fault;
}

QJsonObject Camera::status() const
{
    const std::lock_guard lock(m_mutex);
    return m_model.status(m_config.clock->nowNs());
}

QJsonValue Camera::value(const QString &path) const
{
    return valueAt(status(), path);
}

void Camera::forceValue(const QString &path, const QJsonValue &value)
{
    const std::lock_guard lock(m_mutex);
    m_model.forceValue(path, value);
}

void Camera::setTakeLocked(int number, bool locked)
{
    const std::lock_guard lock(m_mutex);
    m_model.setTakeLocked(number, locked);
}

int Camera::makeTake(const TakeOrder &order, QString *error)
{
    const std::lock_guard lock(m_mutex);
    QString text;
    return m_model.makeTake(order, m_config.clock->nowNs(), error ? error : &text);
}

void Camera::dropTake(int number)
{
    const std::lock_guard lock(m_mutex);
    m_model.dropTake(number);
}

QJsonObject Camera::takeDescription(int number) const
{
    const std::lock_guard lock(m_mutex);
    return m_model.takeDescription(number, m_config.clock->nowNs());
}

SceneParams Camera::takeScene(int number) const
{
    const std::lock_guard lock(m_mutex);
    const auto footage = m_model.footage(number);
    return footage ? footage->correctedScene() : SceneParams{.width = 0, .height = 0};
}

qint64 Camera::takeFrameTimeNs(int number, qint64 frame) const
{
    const std::lock_guard lock(m_mutex);
    const auto footage = m_model.footage(number);
    return footage ? footage->timeNs(frame) : 0;
}

QJsonObject Camera::openTakeDescription(int number) const
{
    const std::lock_guard lock(m_mutex);
    return m_model.openTakeDescription(number, m_config.clock->nowNs());
}

SceneParams Camera::openTakeScene(int number) const
{
    const std::lock_guard lock(m_mutex);
    const auto footage = m_model.openFootage(number);
    return footage ? footage->correctedScene() : SceneParams{.width = 0, .height = 0};
}

SceneParams Camera::sceneParams() const
{
    const std::lock_guard lock(m_mutex);
    return m_model.sceneParams();
}

qint64 Camera::liveFrame() const
{
    const std::lock_guard lock(m_mutex);
    return m_model.liveFrame(m_config.clock->nowNs());
}

qint64 Camera::frameTimeNs(qint64 frame) const
{
    const std::lock_guard lock(m_mutex);
    return m_model.frameTimeNs(frame);
}

Answer Camera::answer(const QByteArray &method, const QString &path, const QByteArray &body)
{
    const std::lock_guard lock(m_mutex);
    Answer answer = m_model.handle({method, path, {}, body, m_config.clock->nowNs()});
    if (answer.run)
        answer.body = answer.run->readAll();
    return answer;
}

void Camera::log(const Request &request)
{
    {
        const std::lock_guard lock(m_mutex);
        m_requests.append(request);
        if (m_requests.size() > keptRequests)
            m_requests.removeFirst();
    }
    emit requestReceived(request);
}

Answer Camera::carryOut(const Request &request, const Fault &fault)
{
    if (hasNoEffect(fault.kind))
        return {};
    if (fault.kind != FaultKind::Vanish)
        return m_model.handle(request);
    if (concernsDrive(request))
        return carryOutPulling(request, fault);
    const bool breaks = fault.bytes > 0;
    Answer answer;
    if (breaks)
        answer = m_model.handle(request);
    if (answer.run)
        answer.run->keep();
    m_model.dropTake(takeOf(request));
    return breaks ? answer : m_model.handle(request);
}

Answer Camera::carryOutPulling(const Request &request, const Fault &fault)
{
    const QJsonObject pull = {{"ssd", "remove"}};
    if (fault.bytes == 0) {
        m_model.operate(pull, request.timeNs);
        return m_model.handle(request);
    }
    const Answer answer = m_model.handle(request);
    if (answer.run)
        answer.run->keep();
    m_model.operate(pull, request.timeNs);
    return answer;
}

Answer Camera::receive(const Request &request, Fault *fault)
{
    if (request.path.startsWith(u"/sim/"))
        return control(*this, request);
    log(withoutFile(request));
    const std::lock_guard lock(m_mutex);
    *fault = takeFault(request, false);
    Answer answer = carryOut(request, *fault);
    aim(fault, request, answer);
    spoil(*fault, &answer, m_divisorsKnown);
    const bool isStatus = request.method == "GET" && request.path == u"/";
    if (isStatus && !m_divisorsKnown && fault->kind != FaultKind::NoAnswer)
        m_divisorsKnown = showsDivisors(answer);
    return answer;
}

QString Camera::operate(const QJsonObject &order)
{
    const std::lock_guard lock(m_mutex);
    return m_model.operate(order, m_config.clock->nowNs());
}

QJsonObject Camera::upload() const
{
    const std::lock_guard lock(m_mutex);
    return m_model.upload();
}

Fault Camera::beginUpload(qint64 bodySize)
{
    const std::lock_guard lock(m_mutex);
    m_model.beginUpload(bodySize);
    return takeFault({"POST", QStringLiteral("/q4fw"), {}, {}, 0}, true);
}

void Camera::continueUpload(qint64 received)
{
    const std::lock_guard lock(m_mutex);
    m_model.continueUpload(received);
}

} // namespace q4sim
