#pragma once

#include "app/util.h"
#include "save/file_name_template.h"
#include "save/save_source.h"

#include <QObject>
#include <QPointer>
#include <QtQmlIntegration>

class PlaybackVeskObject;
class SaveJobQueue;

Q_MOC_INCLUDE("save/save_job_queue.h")
Q_MOC_INCLUDE("take/playback_vesk_object.h")

/**
 * One save that the operator asked for: what is saved and whereto, how far it is and how it ended. It waits
 * in a queue, or starts at once if it has none, and stays listed when it has ended. Lives on the GUI thread.
 */
class SaveJob : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(PlaybackVeskObject *source READ source CONSTANT)
    Q_PROPERTY(SaveJobQueue *queue READ queue CONSTANT)
    Q_PROPERTY(SourceType sourceType READ sourceType CONSTANT)
    Q_PROPERTY(QString sourceCameraName READ sourceCameraName CONSTANT)
    Q_PROPERTY(int sourceTakeId READ sourceTakeId CONSTANT)
    Q_PROPERTY(QString sourceFileName READ sourceFileName CONSTANT)
    Q_PROPERTY(qlonglong startFr READ startFr CONSTANT)
    Q_PROPERTY(qlonglong frCnt READ frCnt CONSTANT)
    Q_PROPERTY(Dest dest READ dest CONSTANT)
    Q_PROPERTY(QString fileName READ fileName NOTIFY fileNameChanged)
    Q_PROPERTY(QString fileExt READ fileExt NOTIFY fileExtChanged)
    Q_PROPERTY(Util::Format format READ format CONSTANT)
    Q_PROPERTY(Util::Codec codec READ codec CONSTANT)
    Q_PROPERTY(double frameRate READ frameRate CONSTANT)
    Q_PROPERTY(int quality READ quality CONSTANT)
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    enum Dest : int { FileDest = 0, SsdDest = 1 };
    Q_ENUM(Dest)
    /** The numbers are those of VeskObject::Type. */
    enum SourceType {
        UnknownSourceType = 0,
        TakeSourceType = 3,
        SsdTakeSourceType = 4,
        VeskFileSourceType = 5
    };
    Q_ENUM(SourceType)
    /** QueuedFW: the camera has taken the job and holds it behind others. */
    enum State { Queued = 0, QueuedFW = 1, Saving = 2, Done = 3, Cancelled = 4, Error = 5 };
    Q_ENUM(State)
    enum FinishState { FinishDone = 0, FinishCancelled = 1, FinishError = 2 };

    /** What a job writes, beside its frames. Frame rate and quality are for video alone. */
    struct Output {
        Dest dest = FileDest;
        Util::Format format = Util::FormatVesk;
        Util::Codec codec = Util::CodecVesk;
        double frameRate = 0.0;
        int quality = 0;
    };

    /** frCnt frames from startFr on, in the source's own numbering. */
    SaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt, const Output &output,
            const FileNameTemplate &fileName, QObject *parent);

    /** Null when the source has gone. */
    PlaybackVeskObject *source() const;
    /** Null for a native file, and when the camera has gone. */
    SaveJobQueue *queue() const;
    SourceType sourceType() const { return m_sourceType; }
    const QString &sourceCameraName() const { return m_sourceCameraName; }
    int sourceTakeId() const { return m_sourceTakeId; }
    const QString &sourceFileName() const { return m_sourceFileName; }
    qlonglong startFr() const { return m_startFr; }
    qlonglong frCnt() const { return m_frCnt; }
    Dest dest() const { return m_output.dest; }
    /** Without folder and extension. */
    QString fileName() const { return m_fileName.expand(0); }
    const QString &fileExt() const { return m_fileName.ext(); }
    Util::Format format() const { return m_output.format; }
    Util::Codec codec() const { return m_output.codec; }
    double frameRate() const { return m_output.frameRate; }
    int quality() const { return m_output.quality; }
    State state() const { return m_state; }
    /** Percent. */
    double progress() const { return m_progress; }
    /** Why the job has failed, in the operator's words. */
    const QString &error() const { return m_error; }

    const FileNameTemplate &fileNameTemplate() const { return m_fileName; }
    /** Puts text, which may hold tags, behind the name. */
    void appendToFileName(const QString &text);

    /** False when the job could not start, and has ended with an error. */
    bool start();
    void setProgress(double progress);
    void setError(const QString &error);
    void setState(State state);
    void setFileName(const QString &text);
    /** Tells a change, but the extension stays that of the format: it is the format that was saved. */
    void setFileExt(const QString &text);

    /** Ends a job that is saving. */
    Q_INVOKABLE virtual void cancel(SaveJob::FinishState state) = 0;
    Q_INVOKABLE void cancel() { cancel(FinishCancelled); }
    /** Shows what was saved, once the job is done. */
    Q_INVOKABLE virtual void open() = 0;

public slots:
    /** The work has ended. */
    void finish(SaveJob::FinishState state);

signals:
    void fileNameChanged();
    void fileExtChanged();
    void stateChanged();
    void progressChanged();
    void errorChanged();
    void finished();

protected:
    /** Begins the work; on failure finishes the job with an error and returns false. */
    virtual bool doStart() = 0;
    virtual void doFinish(FinishState state) = 0;

private:
    void queueDestroyed();
    void sourceDeletedClosed();
    void fail(const QString &error);

    QPointer<PlaybackVeskObject> m_source;
    QPointer<SaveJobQueue> m_queue;
    SourceType m_sourceType;
    QString m_sourceCameraName;
    int m_sourceTakeId;
    QString m_sourceFileName;
    qlonglong m_startFr;
    qlonglong m_frCnt;
    Output m_output;
    FileNameTemplate m_fileName;
    State m_state = Queued;
    double m_progress = 0.0;
    QString m_error;
    /** To what becomes of the source and the queue; an ended job does not care. */
    QList<QMetaObject::Connection> m_lossConnections;
};
