#pragma once

#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"

class QFile;
class QFileDevice;

/** Writes a native file: header and description on the GUI thread, then the records as they came. */
class VeskFileWriter : public VeskWriter
{
    Q_OBJECT

public:
    using VeskWriter::VeskWriter;

    bool start() override;
    /** A save that was cancelled leaves no file; one that failed keeps what is there. */
    void close(SaveJob::FinishState state) override;

private:
    bool writeHeader();

    /** The worker's alone while the thread runs. */
    QFile *m_file = nullptr;
};

/** Appends the records to the file, without a look at them. Lives on the writer's thread. */
class VeskFileWriterWorker : public VeskWriterWorker
{
    Q_OBJECT

public:
    /** file is open, stands where the first record goes, and outlives the worker; the last chunk closes it.
     * frameSize is that of the file's records in bytes. */
    VeskFileWriterWorker(QFileDevice *file, quint32 frameSize);

    void writeFrames(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead,
                     qlonglong framesRemaining) override;

private:
    QFileDevice *m_file;
    quint32 m_frameSize;
};
