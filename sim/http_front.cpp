#include "sim/http_front.h"

#include "sim/camera.h"
#include "sim/frame_run.h"
#include "sim/frame_stream.h"

#include <QHostAddress>
#include <QHttpHeaders>
#include <QHttpServerRequest>
#include <QMetaEnum>

#include <algorithm>

namespace q4sim
{

namespace
{

QByteArray methodName(QHttpServerRequest::Method method)
{
    return QByteArray(QMetaEnum::fromType<QHttpServerRequest::Method>().valueToKey(static_cast<int>(method)))
        .toUpper();
}

Request toRequest(const QHttpServerRequest &received, const Clock &clock)
{
    Request request;
    request.method = methodName(received.method());
    request.path = received.url().path().isEmpty() ? QStringLiteral("/") : received.url().path();
    const QHttpHeaders &headers = received.headers();
    for (qsizetype i = 0; i < headers.size(); ++i)
        request.headers.append({QByteArray(headers.nameAt(i).data(), headers.nameAt(i).size()),
                                headers.valueAt(i).toByteArray()});
    request.body = received.body();
    request.timeNs = clock.nowNs();
    return request;
}

QHttpHeaders headersOf(const Answer &answer)
{
    QHttpHeaders headers;
    headers.append(QHttpHeaders::WellKnownHeader::ContentType, answer.contentType);
    for (const auto &[name, value] : answer.headers)
        headers.append(name, value);
    return headers;
}

// Larger bodies are sent while they are made.
constexpr qint64 wholeMax = 1 << 20;

} // namespace

HttpFront::HttpFront(Camera &camera) : m_camera(camera) {}

HttpFront::~HttpFront()
{
    // Held answers refer to connections, which the base class closes.
    m_held.clear();
}

QString HttpFront::listen(const QHostAddress &address, quint16 port)
{
    auto tcp = std::make_unique<FaultTcpServer>();
    connect(tcp.get(), &FaultTcpServer::opened, this, &HttpFront::watchUploads);
    if (!tcp->listen(address, port))
        return QStringLiteral("cannot listen on %1 port %2: %3")
            .arg(address.toString())
            .arg(port)
            .arg(tcp->errorString());
    if (!bind(tcp.get()))
        return QStringLiteral("cannot serve %1").arg(address.toString());
    m_tcp = tcp.release();
    m_tcp->setParent(this);
    return {};
}

bool HttpFront::handleRequest(const QHttpServerRequest &request, QHttpServerResponder &responder)
{
    Fault fault;
    const Answer answer = m_camera.receive(toRequest(request, *m_camera.config().clock), &fault);
    FaultSocket *connection = m_tcp->connection(request.remoteAddress(), request.remotePort());
    if (fault.kind == FaultKind::NoAnswer || fault.kind == FaultKind::Delay) {
        hold(std::move(responder), answer, connection, fault.kind == FaultKind::Delay ? fault.ms : -1);
        return true;
    }
    armConnection(fault, answer, connection);
    send(responder, answer, connection);
    return true;
}

void HttpFront::missingHandler(const QHttpServerRequest &, QHttpServerResponder &responder)
{
    send(responder, refusal(404, QStringLiteral("not found")), nullptr);
}

void HttpFront::watchUploads(FaultSocket *socket)
{
    connect(socket, &FaultSocket::uploadBegan, this, [this, socket](qint64 bodySize) {
        const Fault fault = m_camera.beginUpload(bodySize);
        if (fault.kind == FaultKind::CloseUpload)
            socket->breakUploadAt(
                std::min(fault.bytes > 0 ? fault.bytes : bodySize * fault.percent / 100, bodySize));
        else if (fault.kind == FaultKind::SlowUpload)
            socket->slowUpload(fault.bytes > 0 ? fault.bytes : 64 << 10, fault.ms);
    });
    connect(socket, &FaultSocket::uploadContinued, this,
            [this](qint64 received) { m_camera.continueUpload(received); });
}

void HttpFront::armConnection(const Fault &fault, const Answer &answer, FaultSocket *connection)
{
    if (!connection)
        return;
    const qint64 size = bodySize(answer);
    if (fault.kind == FaultKind::Drip)
        connection->drip(fault.bytes > 0 ? fault.bytes : 1000, fault.ms, size);
    else if (fault.kind == FaultKind::CloseMidBody)
        connection->closeAfter(fault.bytes > 0 ? std::min(fault.bytes, size) : size / 2);
    else if (fault.kind == FaultKind::Vanish && answer.run)
        connection->closeAfter(std::min(fault.bytes, size));
}

void HttpFront::send(QHttpServerResponder &responder, const Answer &answer, FaultSocket *connection)
{
    if (answer.run && answer.run->gone()) {
        send(responder, refusal(404, QStringLiteral("the take is gone")), connection);
        return;
    }
    const auto status = static_cast<QHttpServerResponder::StatusCode>(answer.status);
    if (!answer.run)
        responder.write(answer.body, headersOf(answer), status);
    else if (answer.run->size() <= wholeMax || !connection)
        responder.write(answer.run->readAll(), headersOf(answer), status);
    else // the responder takes it
        responder.write(std::make_unique<FrameStream>(answer.run, connection).release(), headersOf(answer),
                        status);
}

void HttpFront::hold(QHttpServerResponder &&responder, const Answer &answer, FaultSocket *connection, int ms)
{
    const int id = m_nextHeld++;
    m_held.emplace(id, std::move(responder));
    if (ms < 0)
        return;
    QTimer::singleShot(ms, this, [this, id, answer, socket = QPointer(connection)] {
        auto node = m_held.extract(id);
        send(node.mapped(), answer, socket);
    });
}

} // namespace q4sim
