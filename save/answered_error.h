#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>

/** Why the camera refused a request, in its own words, or else by the status of HTTP. Reads the reply. */
inline QString answeredError(QNetworkReply *reply)
{
    const QJsonValue told =
        QJsonDocument::fromJson(reply->readAll()).object().value(QLatin1StringView("error"));
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return told.isString() ? told.toString() : QStringLiteral("HTTP %1").arg(status);
}
