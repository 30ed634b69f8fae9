#pragma once

#include "save/save_job.h"

#include <QByteArray>
#include <QObject>

/**
 * Does the writing of a VeskWriter. Made on the GUI thread, it lives on the writer's thread from then on, and
 * only there are its members touched.
 */
class VeskWriterWorker : public QObject
{
    Q_OBJECT

public:
    VeskWriterWorker();

public slots:
    /**
     * Writes dataFrameCnt frame records that stand back to back in data. framesRead counts these and all
     * before them; with framesRemaining 0 they are the last. Tells framesWritten once they are written, and
     * finished behind the last ones or at a failure, behind which no more is written.
     */
    virtual void writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                             qlonglong framesRemaining) = 0;

signals:
    void framesWritten(qlonglong framesWritten);
    void finished(SaveJob::FinishState state, QString error = QString());

protected:
    /** Ends the writing. */
    void failWriting();
    /** The chunk is made of as many records as it tells, each of the source's own size in bytes. */
    static bool isWhole(const QByteArray &data, qlonglong dataFrameCnt, qsizetype frameSize);
    /** The writing has ended: what still comes in is dropped. On any thread while a chunk is written. */
    bool hasEnded() const;

private:
    bool m_failed = false;
};
