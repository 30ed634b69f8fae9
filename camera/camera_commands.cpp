#include "camera/camera.h"

#include "app/vesk_app.h"

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>

QNetworkReply *Camera::postCommand(const QString &path, const QByteArray &body)
{
    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->post(
        VeskApp::cameraRequest(m_ip, path, VeskApp::JsonBody), body);
    VeskApp::limitReply(reply);
    return reply;
}

void Camera::sendCommand(const QString &path, const QByteArray &body)
{
    QNetworkReply *reply = postCommand(path, body);
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
}

void Camera::record()
{
    sendCommand(QStringLiteral("/rec"));
}

void Camera::trigger()
{
    sendCommand(QStringLiteral("/trig"));
}

void Camera::abort()
{
    sendCommand(QStringLiteral("/abort"));
}

void Camera::bref()
{
    QNetworkReply *reply = postCommand(QStringLiteral("/bref"), {});
    connect(reply, &QNetworkReply::finished, this, &Camera::brefFinished);
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
}

void Camera::deleteAllTakes()
{
    sendCommand(QStringLiteral("/del"), "{\"take\":-1}");
}

void Camera::partition(int count)
{
    sendCommand(QStringLiteral("/prtn"), QStringLiteral("{\"cnt\":%1}").arg(count).toUtf8());
}

void Camera::lensFocus(int step)
{
    sendCommand(QStringLiteral("/focus"), QStringLiteral("{\"step\":%1}").arg(step).toUtf8());
}

void Camera::shutterMove(bool pos)
{
    sendCommand(QStringLiteral("/shtr"), QStringLiteral("{\"pos\":%1}").arg(int(pos)).toUtf8());
}

void Camera::brefFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    QJsonDocument document;
    if (readReply(reply, &document)) {
        const QJsonValue state = document.object().value(QLatin1StringView("bref_state"));
        if (!state.isUndefined())
            brefStateValue()->setValueFromJson(state);
    }
    reply->deleteLater();
}

bool Camera::readReply(QNetworkReply *reply, QJsonDocument *document)
{
    QJsonParseError error;
    *document = QJsonDocument::fromJson(reply->readAll(), &error);
    if (document->isNull()) {
        qCritical().noquote() << objectName() + QStringLiteral(": json parse error:") << error.errorString();
        return false;
    }
    return reply->error() == QNetworkReply::NoError;
}
