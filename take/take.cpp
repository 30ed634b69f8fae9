#include "take/take.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_manager.h"
#include "take/abstract_take_value.h"

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
    QNetworkReply *reply =
        camera()->postCommand(QStringLiteral("/del"), QStringLiteral("{\"take\":%1}").arg(takeId()).toUtf8());
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    // Of the camera, not of the take: the take may be gone by then.
    if (restartRecord)
        connect(reply, &QNetworkReply::finished, camera(), &Camera::record);
}

/**
 * Hidden settings let a camera record unattended: each take is saved onto the camera's drive, deleted and
 * followed by the next recording. The description ends with valuesInitFinished once in the life of the
 * object, so only the first recording that it sees is saved.
 */
void Take::takeSaved()
{
    if (VeskApp::instance()->setting(QStringLiteral("vesk/x-autosave"), false).toBool() && !valuesInit())
        connect(this, &PlaybackVeskObject::valuesInitFinished, this, &Take::autosaveStart,
                Qt::ConnectionType(Qt::SingleShotConnection | Qt::UniqueConnection));
}

void Take::autosaveStart()
{
    const QString now = VeskApp::instance()->currentDateTime();
    QString name = VeskApp::instance()->setting(QStringLiteral("vesk/x-autosave_filename"), now).toString();
    if (name.isEmpty())
        name = now;
    const SaveJob *job = VeskApp::instance()->saveManager()->createSaveJob(
        this, aFr(), frCntValue()->variant().toLongLong(), SaveManager::SsdDest, Util::FormatVesk,
        Util::CodecVesk, 0.0, 0, name, QString());
    connect(job, &SaveJob::finished, this, &Take::autosaveFinish);
}

void Take::autosaveFinish()
{
    const auto *job = qobject_cast<SaveJob *>(sender());
    const bool restart =
        VeskApp::instance()->setting(QStringLiteral("vesk/x-autosave_restart"), false).toBool();
    if (job->state() == SaveJob::Done && restart)
        deleteTake(true);
    disconnect(job, &SaveJob::finished, this, &Take::autosaveFinish);
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
