#pragma once

#include "save/save_job.h"

class QJsonObject;
class QNetworkReply;
class QTimer;
class Take;

/**
 * A save of a take onto the camera's drive. The camera does it by itself; the job asks for it and watches the
 * camera's values until it is done. Newer firmware queues saves and gives each a number. Older firmware does
 * not, and a save of its is over when the drive neither writes nor shows any progress. Lives on the GUI
 * thread.
 */
class SsdSaveJob : public SaveJob
{
    Q_OBJECT

public:
    SsdSaveJob(Take *take, qlonglong startFr, qlonglong frCnt, const FileNameTemplate &fileName,
               QObject *parent);

    using SaveJob::cancel;
    /** The camera cannot be told to stop. */
    void cancel(SaveJob::FinishState) override {}
    /** Opens the recording on the drive as a source. */
    void open() override;

protected:
    bool doStart() override;
    void doFinish(FinishState state) override;

private slots:
    void requestFinished();
    void watch();
    void watchOldFirmware();

private:
    QByteArray requestBody() const;
    void accepted(const QJsonObject &answer);
    void startOldFirmwareWatch();
    /** The take, with the drive ready; null when the job has been ended because either is not so. */
    Take *watchedTake();

    /** The number that the camera gave this save. */
    qlonglong m_seq = 0;
    /** finish() was reached, which a deleted take alone does not do. */
    bool m_ended = false;
    /** Catches a save that was over before any value of the camera could change. */
    QTimer *m_oldFwTimer = nullptr;
};
