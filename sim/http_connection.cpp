#include "sim/http_connection.h"

#include "sim/camera.h"
#include "sim/http_head.h"

#include <algorithm>

namespace q4sim
{

HttpConnection::HttpConnection(qintptr handle, Camera &camera, QObject *parent)
    : QObject(parent), m_camera(camera), m_socket(this), m_timer(this)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, &HttpConnection::advance);
    connect(&m_socket, &QTcpSocket::disconnected, this, &HttpConnection::onDisconnected);
    connect(&m_timer, &QTimer::timeout, this, &HttpConnection::onTimer);
    m_socket.setSocketDescriptor(handle);
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

HttpConnection::~HttpConnection()
{
    // The socket tells of its end while it is destroyed, when nothing of this object stands any more.
    m_socket.disconnect(this);
}

void HttpConnection::advance()
{
    bool more = true;
    while (more) {
        switch (m_stage) {
        case Stage::Head:
            more = readHead();
            break;
        case Stage::Body:
            more = readBody();
            break;
        case Stage::File:
            // A file that is read slowly waits for the timer.
            more = !m_timer.isActive() && readFile();
            break;
        case Stage::Answer:
        case Stage::Closed:
            more = false;
            break;
        }
    }
}

bool HttpConnection::readHead()
{
    const QByteArray bytes = m_socket.peek(headMax);
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    if (end < 0) {
        if (bytes.size() >= headMax)
            refuse(400, QStringLiteral("the request has no end"));
        return false;
    }
    const std::optional<HttpHead> head = parseHead(m_socket.read(end + 4));
    if (!head) {
        refuse(400, QStringLiteral("no HTTP request"));
        return false;
    }
    m_request = head->request;
    m_left = head->bodySize;
    m_keepAlive = head->keepAlive;
    const bool file = m_request.method == "POST" && m_request.path == u"/q4fw";
    if (head->chunked || (!file && m_left > bodyMax)) {
        refuse(head->chunked ? 411 : 413, QStringLiteral("the body's size must be told and be small"));
        return false;
    }
    if (head->expectsContinue)
        m_socket.write("HTTP/1.1 100 Continue\r\n\r\n");
    m_stage = Stage::Body;
    if (file)
        beginFile();
    return true;
}

bool HttpConnection::readBody()
{
    const QByteArray piece = m_socket.read(m_left);
    m_request.body += piece;
    m_left -= piece.size();
    if (m_left > 0)
        return false;
    m_request.timeNs = m_camera.config().clock->nowNs();
    Fault fault;
    const Answer answer = m_camera.receive(m_request, &fault);
    reply(answer, fault);
    return true;
}

void HttpConnection::beginFile()
{
    m_request.timeNs = m_camera.config().clock->nowNs();
    m_fault = m_camera.beginUpload(m_request, m_left);
    m_form = std::make_unique<FormReader>(m_request.header("Content-Type"));
    m_received = 0;
    m_breakAt = -1;
    if (m_fault.kind == FaultKind::CloseUpload)
        m_breakAt = m_fault.bytes > 0 ? std::min(m_fault.bytes, m_left) : m_left / 2;
    // The rest waits in the network, not here.
    m_socket.setReadBufferSize(pieceMax);
    if (m_fault.kind == FaultKind::SlowUpload)
        m_timer.start(std::max(m_fault.ms, 1));
    m_stage = Stage::File;
}

bool HttpConnection::readFile()
{
    qint64 most = std::min(m_left, pieceMax);
    if (m_breakAt >= 0)
        most = std::min(most, m_breakAt - m_received);
    if (m_fault.kind == FaultKind::SlowUpload && m_fault.bytes > 0)
        most = std::min(most, m_fault.bytes);
    const QByteArray piece = m_socket.read(most);
    m_form->feed(piece);
    m_left -= piece.size();
    m_received += piece.size();
    m_camera.continueUpload(piece.size());
    if (m_received == m_breakAt) {
        m_socket.abort();
        return false;
    }
    if (m_left > 0)
        return !piece.isEmpty();
    m_timer.stop();
    m_socket.setReadBufferSize(0);
    reply(m_camera.endUpload(m_form->result(), m_fault), m_fault);
    return true;
}

void HttpConnection::onDisconnected()
{
    m_stage = Stage::Closed;
    m_timer.stop();
    deleteLater();
}

void HttpConnection::onTimer()
{
    if (m_stage == Stage::File)
        readFile();
    else
        sendDrop();
    advance();
}

void HttpConnection::refuse(int status, const QString &text)
{
    // What follows of the request cannot be told from a next one.
    m_keepAlive = false;
    reply(refusal(status, text), {});
}

void HttpConnection::reply(const Answer &answer, const Fault &fault)
{
    m_stage = Stage::Answer;
    if (fault.kind == FaultKind::NoAnswer)
        return;
    if (fault.kind == FaultKind::Delay) {
        QTimer::singleShot(fault.ms, this, [this, answer] {
            send(answer);
            advance();
        });
        return;
    }
    if (fault.kind == FaultKind::Drip) {
        m_held = answerHead(answer, m_keepAlive) + answer.body;
        m_fault = fault;
        m_timer.start(std::max(fault.ms, 1));
        return;
    }
    if (fault.kind != FaultKind::CloseMidBody) {
        send(answer);
        return;
    }
    const qint64 size = answer.body.size();
    m_socket.write(answerHead(answer, true));
    m_socket.write(answer.body.first(fault.bytes > 0 ? std::min(fault.bytes, size) : size / 2));
    closeBehindAnswer();
}

void HttpConnection::send(const Answer &answer)
{
    m_socket.write(answerHead(answer, m_keepAlive));
    m_socket.write(answer.body);
    endRequest();
}

void HttpConnection::sendDrop()
{
    const qint64 size = m_fault.bytes > 0 ? m_fault.bytes : 1000;
    const QByteArray drop = m_held.first(std::min<qint64>(size, m_held.size()));
    m_socket.write(drop);
    m_held.remove(0, drop.size());
    if (!m_held.isEmpty())
        return;
    m_timer.stop();
    endRequest();
}

void HttpConnection::endRequest()
{
    if (!m_keepAlive) {
        closeBehindAnswer();
        return;
    }
    m_request = {};
    m_stage = Stage::Head;
}

void HttpConnection::closeBehindAnswer()
{
    m_stage = Stage::Closed;
    m_socket.disconnectFromHost();
}

} // namespace q4sim
