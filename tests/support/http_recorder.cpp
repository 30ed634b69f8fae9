#include "tests/support/http_recorder.h"

#include <QTcpServer>

#include <memory>

HttpRecorder::HttpRecorder(const QString &address) : m_address(address)
{
    m_server.setMissingHandler(this, [this](const QHttpServerRequest &request,
                                            QHttpServerResponder &responder) { handle(request, responder); });
    auto tcp = std::make_unique<QTcpServer>();
    if (tcp->listen(m_address, 80) && m_server.bind(tcp.get())) {
        tcp.release()->setParent(&m_server);
        m_listening = true;
    }
}

QList<HttpRecorder::Request> HttpRecorder::requests(const QByteArray &method, const QByteArray &path) const
{
    QList<Request> found;
    for (const Request &request : m_requests) {
        if (request.method == method && request.path == path)
            found.append(request);
    }
    return found;
}

void HttpRecorder::release()
{
    m_hold = nullptr;
    std::vector<Held> held = std::exchange(m_held, {});
    for (Held &one : held)
        answer(one.request, one.responder);
}

void HttpRecorder::beginStream(const QHttpHeaders &headers, QHttpServerResponder::StatusCode status)
{
    m_stream.emplace(std::move(m_held.front().responder));
    m_held.erase(m_held.begin());
    m_stream->writeBeginChunked(headers, status);
}

void HttpRecorder::stream(const QByteArray &piece)
{
    m_stream->writeChunk(piece);
}

void HttpRecorder::endStream()
{
    m_stream->writeEndChunked({});
    m_stream.reset();
}

void HttpRecorder::handle(const QHttpServerRequest &request, QHttpServerResponder &responder)
{
    const char *method = "OTHER";
    switch (request.method()) {
    case QHttpServerRequest::Method::Get:
        method = "GET";
        break;
    case QHttpServerRequest::Method::Put:
        method = "PUT";
        break;
    case QHttpServerRequest::Method::Post:
        method = "POST";
        break;
    default:
        break;
    }
    const Request recorded{method, request.url().path().toUtf8(), request.body(), request.headers()};
    m_requests.append(recorded);
    if (m_hold && m_hold(recorded))
        m_held.push_back({recorded, std::move(responder)});
    else
        answer(recorded, responder);
    emit requestReceived();
}

void HttpRecorder::answer(const Request &request, QHttpServerResponder &responder)
{
    const Reply reply = m_answer ? m_answer(request) : Reply{};
    responder.write(reply.body, reply.headers, reply.status);
}
