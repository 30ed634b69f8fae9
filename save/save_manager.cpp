#include "save/save_manager.h"

#include "app/qml_object_list_model.h"
#include "save/save_job_queue.h"
#include "take/frame_geometry.h"
#include "take/playback_vesk_object.h"
#include "take/take.h"

#include <QDebug>

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
    SaveJob *job = nullptr;
    Q_UNUSED(source)
    Q_UNUSED(frCnt)
    Q_UNUSED(dest)
    Q_UNUSED(codec)
    Q_UNUSED(frameRate)
    Q_UNUSED(quality)
    return job;
}

void SaveManager::removeSaveJob(SaveJob *saveJob)
{
    if (!saveJob || saveJob->state() == SaveJob::QueuedFW || saveJob->state() == SaveJob::Saving)
        return;
    if (saveJob->state() == SaveJob::Queued && saveJob->queue())
        saveJob->queue()->remove(saveJob);
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
        return geometry.frameSize() * frCnt + 4096;
    case Util::FormatAvi:
        return (codec == Util::CodecRaw_BGR24 ? pixels * 3 : pixels) * frCnt;
    case Util::FormatTiff:
        return (pixels + 68) * 3 * frCnt;
    case Util::FormatMp4:
        break;
    }
    return 0;
}
