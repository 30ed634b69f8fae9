#include "take/take.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "take/abstract_take_value.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

Take::Take(int takeId, Camera *camera)
    : AbstractTake(takeId, TakeType, camera),
      m_prtnFrCnt(new VeskValue({QStringLiteral("prtn_fr_cnt")}, QMetaType::Int, this)),
      m_prtnPtFrCnt(new VeskValue({QStringLiteral("prtn_pt_cnt")}, QMetaType::Int, this))
{
    auto *corrMode =
        new AbstractTakeValue({QStringLiteral("acq"), QStringLiteral("corr_mode")}, QMetaType::UInt, this);
    setCorrModeValue(corrMode);
    appendValue(m_prtnFrCnt);
    appendValue(m_prtnPtFrCnt);
    appendValue(corrMode);
    connect(corrMode, &CameraValue::valueSent, this, &Take::correctionChanged, Qt::QueuedConnection);
    connect(corrMode, &CameraValue::valueChangedRemote, this, &Take::correctionChanged);
    setObjectName(objectName() + QStringLiteral("-Take"));
}

void Take::setActive(bool active)
{
    if (active == m_active)
        return;
    m_active = active;
    emit activeChanged();
    if (active)
        getTakeInfo(true, false);
    if (active || savedOpened())
        startInfoTimer();
    else
        stopInfoTimer();
}

void Take::setLocked(bool locked)
{
    if (locked == m_locked)
        return;
    m_locked = locked;
    emit lockedChanged();
}

void Take::deleteTake(bool restartRecord)
{
    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->post(
        VeskApp::cameraRequest(camera()->ip(), QStringLiteral("/del"), VeskApp::JsonBody),
        QStringLiteral("{\"take\":%1}").arg(takeId()).toUtf8());
    VeskApp::limitReply(reply);
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    // Of the camera, not of the take: the take may be gone by then.
    if (restartRecord)
        connect(reply, &QNetworkReply::finished, camera(), &Camera::record);
}

/** The camera corrects the frames that it sends from now on; one that is on its way may still be an old one.
 */
void Take::correctionChanged()
{
    m_staleFrame = frameInFlight();
    refreshIfPaused();
}

void Take::frameReady()
{
    AbstractTake::frameReady();
    refreshIfStale();
}

void Take::frameFailed()
{
    AbstractTake::frameFailed();
    refreshIfStale();
}

void Take::refreshIfStale()
{
    if (std::exchange(m_staleFrame, false))
        refreshIfPaused();
}
