#pragma once

#include "save/save_job.h"
#include "take/vesk_reader.h"

#include <QByteArray>
#include <QThread>

#include <memory>

class FileSaveJob;
class QFile;
class QIODevice;

/**
 * Does the reading of a VeskFileReader. Made on the GUI thread, it lives on the reader's thread from then on,
 * and only there are its members touched.
 */
class VeskFileReaderWorker : public QObject
{
    Q_OBJECT

public:
    /** Which records are read, and where they lie. */
    struct Range {
        qlonglong startFr = 0;
        qlonglong frCnt = 0;
        /** Number and place of the file's first frame, in bytes. */
        qlonglong firstFr = 0;
        qlonglong dataOffset = 0;
        /** Bytes. */
        quint32 frameSize = 0;
    };
    /** Frames of a chunk at most. */
    static constexpr qlonglong MaxChunkFrames = 10;

    /** file is open and outlives the worker, which alone uses it. */
    VeskFileReaderWorker(QIODevice *file, const Range &range);

public slots:
    /** Reads the next chunk; nothing behind the last one or a failure. */
    void read();

signals:
    void readyRead(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead, qlonglong framesRemaining);
    void finished(SaveJob::FinishState state, QString error = QString());

private:
    QIODevice *m_file;
    Range m_range;
    qlonglong m_framesRead = 0;
    qlonglong m_framesRemaining;
    bool m_ended = false;
};

/**
 * Reads the frames of a save from an open native file, through a handle and on a thread of its own: the file
 * may play on meanwhile, and be closed. The next chunk is read when the writer has told of the one before, so
 * that no more than one waits for it. Lives on the GUI thread; its parent is the job.
 */
class VeskFileReader : public VeskReader
{
    Q_OBJECT

public:
    explicit VeskFileReader(FileSaveJob *job);
    /** Waits for the chunk that is being read. */
    ~VeskFileReader() override;

    bool start() override;
    void stop() override;

private:
    void workerFinished(SaveJob::FinishState state, const QString &error);
    /** False when the reader had ended before. */
    bool end();

    FileSaveJob *m_job;
    std::unique_ptr<QFile> m_file;
    std::unique_ptr<VeskFileReaderWorker> m_worker;
    QThread m_thread;
    bool m_finished = false;
};
