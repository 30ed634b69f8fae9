#include "save/ssd_save_job.h"

#include "camera/camera.h"
#include "save/answered_error.h"
#include "save/save_job_queue.h"
#include "take/take.h"

#include <QDebug>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

using namespace std::chrono_literals;

/** Two polls at least have shown the drive by then. */
static constexpr auto ShortSaveTime = 1000ms;
/** From this value of featureSsdSave on the camera queues and counts its saves. */
static constexpr int CountingSsdSave = 2;

static int number(const CameraValue *value)
{
    return value->variant().toInt();
}

static bool countsSaves(const Camera *camera)
{
    return number(camera->featureSsdSaveValue()) >= CountingSsdSave;
}

static SaveSource driveSource(Take *take)
{
    SaveSource source(take);
    source.queue = take->camera()->ssdSaveJobQueue();
    return source;
}

SsdSaveJob::SsdSaveJob(Take *take, qlonglong startFr, qlonglong frCnt, const FileNameTemplate &fileName,
                       QObject *parent)
    : SaveJob(driveSource(take), startFr, frCnt, {.dest = SsdDest}, fileName, parent)
{
}

QByteArray SsdSaveJob::requestBody() const
{
    const auto *take = qobject_cast<Take *>(source());
    const QString range =
        QStringLiteral(R"("take":%1,"start":%2,"cnt":%3)").arg(take->takeId()).arg(startFr()).arg(frCnt());
    if (!countsSaves(take->camera()))
        return QByteArray('{' + range.toUtf8() + '}');
    // The name goes in last and as it stands: it may hold what looks like a place for another text.
    return QByteArray('{' + range.toUtf8() + R"(,"name":")" + fileName().toUtf8() + "\"}");
}

bool SsdSaveJob::doStart()
{
    const auto *take = qobject_cast<Take *>(source());
    if (!take || !take->savedOpened()) {
        setError(QStringLiteral("take deleted or closed"));
        finish(FinishError);
        return false;
    }
    QNetworkReply *reply = take->camera()->postCommand(QStringLiteral("/ssd-save"), requestBody());
    connect(reply, &QNetworkReply::finished, this, &SsdSaveJob::requestFinished);
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
    return true;
}

void SsdSaveJob::requestFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    reply->deleteLater();
    if (m_ended)
        return;
    const auto *take = qobject_cast<Take *>(source());
    if (!take) {
        finish(FinishError);
        return;
    }
    if (reply->error() != QNetworkReply::NoError) {
        setError(answeredError(reply));
        finish(FinishError);
    } else if (countsSaves(take->camera())) {
        accepted(QJsonDocument::fromJson(reply->readAll()).object());
    } else {
        startOldFirmwareWatch();
    }
}

/** The save may have ended before this answer is read, and then no value changes any more. */
void SsdSaveJob::accepted(const QJsonObject &answer)
{
    const QJsonValue name = answer.value(QLatin1StringView("name"));
    if (name.isString()) {
        const QFileInfo file(name.toString());
        setFileName(file.baseName());
        setFileExt(file.suffix());
    }
    m_seq = answer.value(QLatin1StringView("seq")).toInteger();
    qDebug() << "m_seq=" << m_seq;
    const Camera *camera = qobject_cast<Take *>(source())->camera();
    const qlonglong wrSeq = camera->ssdWrSeqValue()->variant().toLongLong();
    qDebug() << "wrSeq=" << wrSeq;
    if (wrSeq >= m_seq) {
        qDebug() << "Save completed quickly";
        watch();
        return;
    }
    for (const CameraValue *value :
         {camera->ssdProgressValue(), camera->ssdWrSeqValue(), camera->ssdStateValue()})
        connect(value, &CameraValue::valueChangedRemote, this, &SsdSaveJob::watch);
}

Take *SsdSaveJob::watchedTake()
{
    auto *take = qobject_cast<Take *>(source());
    if (!take) {
        finish(FinishError);
        return nullptr;
    }
    const int ssdState = number(take->camera()->ssdStateValue());
    if (ssdState == Camera::SsdReady)
        return take;
    setError(QStringLiteral("ssd.state = %1").arg(ssdState));
    finish(FinishError);
    return nullptr;
}

void SsdSaveJob::watch()
{
    const Take *take = m_ended ? nullptr : watchedTake();
    if (!take)
        return;
    // It moves past a save when that is complete.
    const qlonglong wrSeq = take->camera()->ssdWrSeqValue()->variant().toLongLong();
    if (wrSeq >= m_seq) {
        finish(FinishDone);
    } else if (wrSeq == m_seq - 1) {
        setState(Saving);
        setProgress(number(take->camera()->ssdProgressValue()));
    } else {
        setState(QueuedFW);
    }
}

void SsdSaveJob::startOldFirmwareWatch()
{
    m_oldFwTimer = new QTimer(this);
    m_oldFwTimer->setSingleShot(true);
    connect(m_oldFwTimer, &QTimer::timeout, this, &SsdSaveJob::watchOldFirmware);
    m_oldFwTimer->start(ShortSaveTime);
    qDebug() << "start old fw save timer";
    const Camera *camera = qobject_cast<Take *>(source())->camera();
    for (const CameraValue *value : {camera->ssdProgressValue(), camera->ssdStateValue()})
        connect(value, &CameraValue::valueChangedRemote, this, &SsdSaveJob::watchOldFirmware);
}

void SsdSaveJob::watchOldFirmware()
{
    // The timer may still tick after the end, which must stay as it was.
    const Take *take = m_ended ? nullptr : watchedTake();
    if (!take)
        return;
    const int progress = number(take->camera()->ssdProgressValue());
    setProgress(progress);
    if (progress == 0 && number(take->camera()->ssdWrStateValue()) == Camera::SsdWrIdle) {
        qDebug() << "old fw short save condition";
        finish(FinishDone);
    }
}

void SsdSaveJob::doFinish(FinishState)
{
    m_ended = true;
    const auto *take = qobject_cast<Take *>(source());
    if (!take)
        return;
    const Camera *camera = take->camera();
    for (const CameraValue *value :
         {camera->ssdProgressValue(), camera->ssdWrSeqValue(), camera->ssdStateValue()})
        disconnect(value, nullptr, this, nullptr);
}

void SsdSaveJob::open()
{
    // The take may be gone with its partition; the queue is the camera's for as long as that lives.
    auto *camera = queue() ? qobject_cast<Camera *>(queue()->parent()) : nullptr;
    if (state() == Done && camera)
        camera->ssdFOpen(fileName() + QLatin1Char('.') + fileExt());
}
