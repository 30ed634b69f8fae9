#include "save/save_manager.h"

#include "app/arithmetic.h"
#include "app/qml_object_list_model.h"
#include "file/vesk_file.h"
#include "file/vesk_file_save_job.h"
#include "save/img_file_save_job.h"
#include "save/save_job_queue.h"
#include "save/ssd_save_job.h"
#include "save/video_file_save_job.h"
#include "take/frame_geometry.h"
#include "take/playback_vesk_object.h"
#include "take/ssd_take.h"
#include "take/take.h"

#include <QDebug>

#include <optional>

static std::optional<SaveSource> saveSource(PlaybackVeskObject *source)
{
    if (auto *take = qobject_cast<Take *>(source))
        return SaveSource(take);
    if (auto *take = qobject_cast<SsdTake *>(source))
        return SaveSource(take);
    if (auto *file = qobject_cast<VeskFile *>(source))
        return SaveSource(file);
    return {};
}

SaveManager::SaveManager(QObject *parent)
    : QObject(parent), m_saveJobs(new QQmlObjectListModel<SaveJob>(this))
{
    qDebug() << Q_FUNC_INFO;
}

QQmlObjectListModelBase *SaveManager::saveJobs() const
{
    return m_saveJobs;
}

SaveJob *SaveManager::createSaveJob(PlaybackVeskObject *source, qlonglong startFr, qlonglong frCnt,
                                    SaveDest dest, Util::Format format, Util::Codec codec, double frameRate,
                                    int quality, const QString &fileName, const QString &folderPath)
{
    const FileNameTemplate name(folderPath, fileName, format, startFr);
    const std::optional<SaveSource> from = saveSource(source);
    SaveJob *job = nullptr;
    auto *take = qobject_cast<Take *>(source);
    if (!from || (dest == SsdDest ? !take : dest != FileDest))
        return nullptr;
    if (dest == SsdDest)
        job = new SsdSaveJob(take, startFr, frCnt, name, this);
    else if (format == Util::FormatVesk)
        job = new VeskFileSaveJob(*from, startFr, frCnt, name, this);
    else if (format == Util::FormatTiff)
        job = new ImgFileSaveJob(*from, startFr, frCnt, format, name, this);
    else if (format == Util::FormatAvi || format == Util::FormatMp4)
        job = new VideoFileSaveJob(*from, startFr, frCnt, format, codec, frameRate, quality, name, this);
    else
        return nullptr;
    m_saveJobs->append(job);
    if (job->queue())
        job->queue()->enqueue(job);
    else
        job->start();
    return job;
}

void SaveManager::removeSaveJob(SaveJob *saveJob)
{
    if (!saveJob || saveJob->state() == SaveJob::QueuedFW || saveJob->state() == SaveJob::Saving)
        return;
    if (saveJob->queue())
        saveJob->queue()->release(saveJob);
    m_saveJobs->remove(saveJob);
    saveJob->deleteLater();
}

/** The products are formed in 32 bits and only then multiplied by the number of frames. */
qlonglong SaveManager::estFileSize(PlaybackVeskObject *source, qlonglong frCnt, Util::Format format,
                                   Util::Codec codec) const
{
    if (!source)
        return 0;
    const FrameGeometry geometry = frameGeometry(*source);
    const quint32 pixels = geometry.imgSize();
    switch (format) {
    case Util::FormatVesk:
        return saturatedSum(saturatedProduct(geometry.frameSize(), frCnt), 4096);
    case Util::FormatAvi:
        return saturatedProduct(codec == Util::CodecRaw_BGR24 ? pixels * 3 : pixels, frCnt);
    case Util::FormatTiff:
        return saturatedProduct((pixels + 68) * 3, frCnt);
    case Util::FormatMp4:
        break;
    }
    return 0;
}
