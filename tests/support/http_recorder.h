#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QHttpServer>
#include <QHttpServerResponder>
#include <QList>
#include <QObject>

#include <functional>
#include <optional>
#include <vector>

/**
 * An HTTP server on port 80 of a loopback address that records what it is asked and answers what the test
 * says; stands for a camera where a test needs a reply to the byte, or one that waits.
 */
class HttpRecorder : public QObject
{
    Q_OBJECT

public:
    struct Request {
        QByteArray method;
        QByteArray path;
        QByteArray body;
        QHttpHeaders headers;
    };
    struct Reply {
        QByteArray body;
        QHttpHeaders headers;
        QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok;
    };

    explicit HttpRecorder(const QString &address);

    bool isListening() const { return m_listening; }
    QHostAddress address() const { return m_address; }

    const QList<Request> &requests() const { return m_requests; }
    /** The requests of one method and path. */
    QList<Request> requests(const QByteArray &method, const QByteArray &path) const;
    void clear() { m_requests.clear(); }

    /** What every later request gets; the default is an empty reply. */
    void setAnswer(std::function<Reply(const Request &)> answer) { m_answer = std::move(answer); }
    /** While set, requests whose path passes are recorded but answered only by release(). */
    void setHold(std::function<bool(const Request &)> hold) { m_hold = std::move(hold); }
    /** Answers everything that is held back and holds nothing more. */
    void release();
    qsizetype heldCount() const { return qsizetype(m_held.size()); }

    /** Answers the oldest request that is held back, piece by piece and with no word on how long it gets. */
    void beginStream(const QHttpHeaders &headers = {},
                     QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok);
    void stream(const QByteArray &piece);
    void endStream();

signals:
    void requestReceived();

private:
    struct Held {
        Request request;
        QHttpServerResponder responder;
    };

    void handle(const QHttpServerRequest &request, QHttpServerResponder &responder);
    void answer(const Request &request, QHttpServerResponder &responder);

    QHostAddress m_address;
    QHttpServer m_server;
    bool m_listening = false;
    QList<Request> m_requests;
    std::function<Reply(const Request &)> m_answer;
    std::function<bool(const Request &)> m_hold;
    std::vector<Held> m_held;
    std::optional<QHttpServerResponder> m_stream;
};
