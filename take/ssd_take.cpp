#include "take/ssd_take.h"

#include "camera/camera.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>

static constexpr int NoTakeId = -1;

SsdTake::SsdTake(const QString &name, Camera *camera)
    : AbstractTake(NoTakeId, SsdTakeType, camera), m_name(name)
{
    // What the camera has done to the frames lies on the drive with them.
    auto *corrMode =
        new VeskValue({QStringLiteral("acq"), QStringLiteral("corr_mode")}, QMetaType::UInt, this);
    setCorrModeValue(corrMode);
    appendValue(corrMode);
    setObjectName(objectName() + QStringLiteral("-SsdTake"));
}

QNetworkReply *SsdTake::post(const QString &path, const QString &body)
{
    QNetworkReply *reply = camera()->postCommand(path, body.toUtf8());
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
    return reply;
}

void SsdTake::fopen()
{
    // Nothing of the name is escaped: the camera takes the bytes between the quotes.
    QNetworkReply *reply =
        post(QStringLiteral("/ssd-fopen"), QStringLiteral("{\"name\":\"%1\"}").arg(m_name));
    connect(reply, &QNetworkReply::finished, this, &SsdTake::fopenHandleFinished);
}

void SsdTake::fopenHandleFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
    const int takeId = answer.value(QLatin1StringView("take")).toInt();
    if (reply->error() != QNetworkReply::NoError) {
        qDebug() << "fopenFinished error";
    } else {
        setTakeId(takeId);
        setSavedOpened(true, true, false);
    }
    reply->deleteLater();
    emit fopenFinished();
}

void SsdTake::fclose()
{
    QNetworkReply *reply = post(QStringLiteral("/ssd-fclose"), QStringLiteral("{\"take\":%1}").arg(takeId()));
    connect(reply, &QNetworkReply::finished, this, &SsdTake::fcloseHandleFinished);
}

void SsdTake::fcloseHandleFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    if (reply->error() != QNetworkReply::NoError)
        qDebug() << "fcloseFinished error";
    else
        setSavedOpened(false, true, false);
    reply->deleteLater();
    emit fcloseFinished();
}
