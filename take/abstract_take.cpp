#include "take/abstract_take.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "image/abstract_take_img_adj_model.h"
#include "image/img_search.h"
#include "save/save_job_queue.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <algorithm>

using namespace std::chrono_literals;

static constexpr auto InfoInterval = 100ms;
/** Of the metadata before each frame; a camera that tells no size uses this one. */
static constexpr int UsualMetaSize = 32;

AbstractTake::AbstractTake(int takeId, Type type, Camera *camera)
    : PlaybackVeskObject(type, camera), m_camera(camera), m_takeId(takeId), m_infoTimer(new QTimer(this))
{
    connect(m_infoTimer, &QTimer::timeout, this, &AbstractTake::infoTimeout);
    auto *model = new AbstractTakeImgAdjModel(this);
    setImgAdjModel(model);
    connect(model, &ImgAdjModel::imgAdjUpdated, this, &AbstractTake::refreshIfPaused);
    setVeskFrame(new VeskFrame(&model->data(), this));
    metaSizeValue()->setValue(UsualMetaSize, true);
}

void AbstractTake::setTakeId(int takeId)
{
    if (takeId == m_takeId)
        return;
    m_takeId = takeId;
    emit takeIdChanged();
}

SaveJobQueue *AbstractTake::fileSaveJobQueue() const
{
    return m_camera->fileSaveJobQueue();
}

bool AbstractTake::framesBlocked() const
{
    return !m_savedOpened || fileSaveJobQueue()->activeSaveJob();
}

QString AbstractTake::takePath() const
{
    return QStringLiteral("%1/take%2").arg(takesPath()).arg(m_takeId);
}

void AbstractTake::setSavedOpened(bool value, bool latch, bool quiet)
{
    if (value == m_savedOpened || m_closeLatch) {
        m_closeLatch = false;
        return;
    }
    m_savedOpened = value;
    emit savedOpenedChanged();
    if (!value) {
        emit deletedClosed();
        imgSearch()->cancel();
        if (selected())
            VeskApp::instance()->setSelectedVeskObject(m_camera);
        m_closeLatch = latch;
        stopInfoTimer();
        imgFrame()->setImage(QImage());
        return;
    }
    m_rangeLost = false;
    getTakeInfo(true, true);
    startInfoTimer();
    if (!quiet)
        takeSaved();
}

void AbstractTake::startInfoTimer()
{
    m_infoTimer->start(InfoInterval);
}

void AbstractTake::stopInfoTimer()
{
    m_infoTimer->stop();
}

void AbstractTake::getTakeInfo(bool force, bool init)
{
    if ((m_infoInFlight && !init) || (!selected() && !force))
        return;
    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->get(
        VeskApp::cameraRequest(m_camera->ip(), takePath(), VeskApp::NoBody));
    VeskApp::limitReply(reply);
    reply->setProperty("init", init);
    m_infoInFlight = true;
    connect(reply, &QNetworkReply::finished, this, &AbstractTake::getTakeInfoFinished);
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
}

void AbstractTake::getTakeInfoFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    const bool init = reply->property("init").toBool();
    const bool read = readTakeInfo(reply);
    if (read && m_savedOpened && (init || m_rangeLost))
        openRange();
    // Markers of the recording before may stand beside this one; the next description brings them in.
    else if (init)
        m_rangeLost = valuesInit();
    m_infoInFlight = false;
    reply->deleteLater();
}

/** False when the values stay as they were. */
bool AbstractTake::readTakeInfo(QNetworkReply *reply)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(reply->readAll(), &error);
    if (document.isNull()) {
        qCritical().noquote() << objectName() + QStringLiteral(": json parse error:") << error.errorString();
        return false;
    }
    if (reply->error() != QNetworkReply::NoError)
        return false;
    // The camera answers with its whole tree down to the take.
    const QStringList path = takePath().split(QLatin1Char('/'), Qt::SkipEmptyParts);
    updateValues(jsonValue(path, document.object()).toObject());
    return true;
}

/**
 * The range opens to all frames with the first recording that the object sees. A later one finds the markers
 * and the playhead where they were, or at its nearer end where they would stand beside it.
 */
void AbstractTake::openRange()
{
    const qint64 first = firstFrValue()->variant().toInt();
    const qint64 last = std::max<qint64>(first, lastFrValue()->variant().toInt());
    const bool later = valuesInit();
    m_rangeLost = false;
    setAFr(later ? std::clamp(aFr(), first, last) : first, true);
    setBFr(later ? std::clamp(bFr(), aFr(), last) : lastFrValue()->variant().toInt(), true);
    setFr(later ? fr() : first, true);
    setValuesInit(true);
}

void AbstractTake::frameReady()
{
    PlaybackVeskObject::frameReady();
    // A frame that was on its way when the recording went.
    if (!m_savedOpened)
        imgFrame()->setImage(QImage());
}

int AbstractTake::getFrame(RawFrame *rawFrame, qlonglong fr)
{
    const QString body = QStringLiteral(R"({"type":3,"src":%1,"take":%2,"start":%3,"cnt":1,"lock":0})")
                             .arg(xferSrc())
                             .arg(m_takeId)
                             .arg(fr);
    return getFrameXfer(rawFrame, m_camera->ip(), body.toUtf8());
}

QNetworkReply *AbstractTake::startXfer(qlonglong start, qlonglong cnt)
{
    const QString body = QStringLiteral(R"({"type":3,"src":%1,"take":%2,"start":%3,"cnt":%4})")
                             .arg(xferSrc())
                             .arg(m_takeId)
                             .arg(start)
                             .arg(cnt);
    return VeskApp::instance()->networkAccessManager()->post(
        VeskApp::cameraRequest(m_camera->ip(), QStringLiteral("/xfer"), VeskApp::JsonBody), body.toUtf8());
}
