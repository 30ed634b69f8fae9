#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>

/// What came back for one request.
struct Reply {
    int status = 0; ///< 0 when there was no answer
    QByteArray body;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QList<QNetworkReply::RawHeaderPair> headers;

    // Const, so that json()["a"]["b"] reads and does not insert.
    const QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
    QByteArray header(const QByteArray &name) const
    {
        for (const auto &[key, value] : headers) {
            if (key.compare(name, Qt::CaseInsensitive) == 0)
                return value;
        }
        return {};
    }
};

/// A client on the event loop of its thread.
class HttpClient
{
public:
    explicit HttpClient(const QString &host) : m_host(host) {}

    QNetworkReply *start(const QByteArray &method, const QString &path, const QByteArray &body = {})
    {
        QNetworkRequest request(QUrl(QStringLiteral("http://") + m_host + path));
        request.setRawHeader("User-Agent", "test");
        if (method != "GET")
            request.setRawHeader("Content-Type", "application/json");
        return m_manager.sendCustomRequest(request, method, body);
    }

    Reply send(const QByteArray &method, const QString &path, const QByteArray &body = {})
    {
        QNetworkReply *sent = start(method, path, body);
        QSignalSpy finished(sent, &QNetworkReply::finished);
        if (!sent->isFinished() && !finished.wait(20000))
            sent->abort();
        Reply reply;
        reply.status = sent->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        reply.body = sent->readAll();
        reply.error = sent->error();
        reply.headers = sent->rawHeaderPairs();
        sent->deleteLater();
        return reply;
    }

    Reply get(const QString &path = QStringLiteral("/")) { return send("GET", path); }
    int put(const QString &path, const QByteArray &body) { return send("PUT", path, body).status; }
    int post(const QString &path, const QByteArray &body = {}) { return send("POST", path, body).status; }

private:
    QString m_host;
    QNetworkAccessManager m_manager;
};
