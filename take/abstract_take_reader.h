#pragma once

#include "take/chunk_memory.h"
#include "take/vesk_reader.h"

#include <QByteArray>
#include <QPointer>

class FileSaveJob;
class QNetworkReply;

/**
 * Reads the frames of a save from a take on a camera: asks for the whole range at once and cuts the answer at
 * frame boundaries as it streams in. What the writer has no time for is left in the connection, which slows
 * the camera down. Lives on the GUI thread; its parent is the job.
 */
class AbstractTakeReader : public VeskReader
{
    Q_OBJECT

public:
    /** Bytes that may wait for the writer's worker before no more are taken from the connection. */
    static constexpr qint64 MaxWaitingBytes = 64 * 1024 * 1024;

    explicit AbstractTakeReader(FileSaveJob *job);

    bool start() override;
    /** The connection is closed with the next data that it brings. */
    void stop() override;

signals:
    void readyRead(QByteArray data, qlonglong dataFrameCnt, qlonglong framesRead, qlonglong framesRemaining);

private:
    void limitReply();
    void replyReadyRead();
    void replyFinished();
    void goOn();
    void takeFrames();
    void takeError();
    void fail();
    void setFirstError(const QString &text);
    bool isFrames() const;
    bool isCutShort() const;
    qint64 recordSize() const;
    qint64 waitingBytes(qint64 recordSize) const;
    bool takeBytes();

    FileSaveJob *m_job;
    QPointer<QNetworkReply> m_reply;
    qlonglong m_framesRead = 0;
    qlonglong m_framesRemaining;
    bool m_stopped = false;
    /** There are frames in the reply that wait for the worker to catch up. */
    bool m_heldBack = false;
    /** Behind the chunks in it, a part of a frame may have arrived: the start of the next one. */
    ChunkMemory m_memory;
};
