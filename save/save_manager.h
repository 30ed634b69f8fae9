#pragma once

#include "app/qml_object_list_model_base.h"
#include "app/util.h"
#include "save/save_job.h"

#include <QObject>
#include <QtQmlIntegration>

class PlaybackVeskObject;
template <class ItemType> class QQmlObjectListModel;

/** Makes the save jobs, lists and owns them until the operator removes them. Lives on the GUI thread. */
class SaveManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QQmlObjectListModelBase *saveJobs READ saveJobs CONSTANT)

public:
    enum SaveDest : int { FileDest = 0, SsdDest = 1 };
    Q_ENUM(SaveDest)

    explicit SaveManager(QObject *parent);

    /** In the order of their creation. */
    QQmlObjectListModelBase *saveJobs() const;

    /**
     * Makes a job and starts it, or puts it into its camera's queue. Null for a source, destination or format
     * that nothing can be made of. frameRate in frames per second.
     */
    Q_INVOKABLE SaveJob *createSaveJob(PlaybackVeskObject *source, qlonglong startFr, qlonglong frCnt,
                                       SaveManager::SaveDest dest, Util::Format format, Util::Codec codec,
                                       double frameRate, int quality, const QString &fileName,
                                       const QString &folderPath);
    /** Forgets a job that waits or has ended; one that is at work is left alone. */
    Q_INVOKABLE void removeSaveJob(SaveJob *saveJob);
    /** Bytes that a save will take, 0 where nobody can tell. */
    Q_INVOKABLE qlonglong estFileSize(PlaybackVeskObject *source, qlonglong frCnt, Util::Format format,
                                      Util::Codec codec) const;

private:
    QQmlObjectListModel<SaveJob> *m_saveJobs;
};
