#include "camera/camera_value.h"

#include "app/vesk_app.h"
#include "camera/camera.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimerEvent>

using namespace std::chrono_literals;

static constexpr auto SendInterval = 50ms;
static constexpr auto AnswerTime = 1s;

CameraValue::CameraValue(const QStringList &jsonPath, int type, QObject *parent, QVariant *storage,
                         const QStringList &altJsonPath)
    : VeskValue(jsonPath, type, parent, storage, altJsonPath)
{
}

void CameraValue::setValue(const QVariant &value, bool silent)
{
    if (!VeskValue::updateValue(value))
        return;
    m_ignoreNextUpdate = true;
    m_sendPending = true;
    // The timer runs only while a change waits: a hundred idle timers per camera would keep the
    // processor awake.
    if (!m_sendTimer.isActive())
        m_sendTimer.start(SendInterval, this);
    if (!silent)
        emit valueChangedLocal(this);
}

bool CameraValue::ignoresUpdate()
{
    // A change that is held back may wait for longer than one poll; until it goes out the camera cannot know,
    // and the first poll behind it may have been on its way before.
    return (m_sendPending && m_unanswered > 0) || std::exchange(m_ignoreNextUpdate, false);
}

bool CameraValue::setValueFromJson(const QJsonValue &json)
{
    if (ignoresUpdate())
        return false;
    const bool changed = VeskValue::setValueFromJson(json);
    if (changed)
        emit valueChangedRemote();
    m_ignoreNextUpdate = false;
    return changed;
}

bool CameraValue::updateValue(const QVariant &value)
{
    if (ignoresUpdate())
        return false;
    const bool changed = VeskValue::updateValue(value);
    if (changed)
        emit valueChangedRemote();
    m_ignoreNextUpdate = false;
    return changed;
}

void CameraValue::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_sendTimer.timerId()) {
        VeskValue::timerEvent(event);
        return;
    }
    // Requests travel on several connections: one that follows at once could overtake the one before, which
    // would then undo it. A camera that does not answer holds nothing back for longer than this.
    if (m_unanswered > 0 && !m_answerBy.hasExpired())
        return;
    m_sendTimer.stop();
    sendValue();
}

void CameraValue::sendValue()
{
    putValue(qobject_cast<Camera *>(parent()), keyPath());
}

QString CameraValue::keyPath() const
{
    QString path;
    for (const QString &key : jsonPath())
        path += QLatin1Char('/') + key;
    return path;
}

void CameraValue::putValue(Camera *camera, const QString &path)
{
    QByteArray body = text().toUtf8();
    if (!std::exchange(m_sendPending, false))
        return;
    // Nothing between the quotes is escaped: the camera takes the bytes as they are typed.
    if (type() == QMetaType::QString || type() == HexUInt64)
        body = '"' + body + '"';
    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->put(
        VeskApp::cameraRequest(camera->ip(), path, VeskApp::JsonBody), body);
    VeskApp::limitReply(reply);
    ++m_unanswered;
    m_answerBy.setRemainingTime(AnswerTime);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        --m_unanswered;
        reply->deleteLater();
        emit valueSent();
    });
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
}
