#include "take/abstract_take_reader.h"

#include "save/answered_error.h"
#include "save/file_save_job.h"
#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"
#include "take/abstract_take.h"

#include <QNetworkReply>

#include <algorithm>

/**
 * Bytes that the reply may hold unread, and so usually those of a chunk. Large enough for the full speed of
 * the connection, small enough that a slow disk writes a chunk soon: ending a save waits for that.
 */
static constexpr qint64 ReplyBytes = 2 * 1024 * 1024;
/** Twice the largest frame that there is; whoever promises a larger one has no frames. */
static constexpr qint64 MaxRecordBytes = 32 * 1024 * 1024;
static constexpr qint64 MaxErrorBytes = 1024 * 1024;

AbstractTakeReader::AbstractTakeReader(FileSaveJob *job)
    : VeskReader(job), m_job(job), m_framesRemaining(job->frCnt())
{
}

bool AbstractTakeReader::start()
{
    auto *take = qobject_cast<AbstractTake *>(m_job->source());
    m_reply = take ? take->startXfer(m_job->startFr(), m_job->frCnt()) : nullptr;
    if (!m_reply) {
        setError(QStringLiteral("can't start xfer"));
        return false;
    }
    // The network manager begins in the next turn of the event loop. By the time that it tells that the
    // request is on its way, a busy GUI thread may have let hundreds of megabytes in.
    QMetaObject::invokeMethod(this, &AbstractTakeReader::limitReply, Qt::QueuedConnection);
    connect(m_reply, &QNetworkReply::requestSent, this, &AbstractTakeReader::limitReply);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &AbstractTakeReader::limitReply);
    connect(m_reply, &QNetworkReply::readyRead, this, &AbstractTakeReader::replyReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &AbstractTakeReader::replyFinished);
    connect(this, &QObject::destroyed, m_reply, &QObject::deleteLater);
    VeskWriter *writer = m_job->writer();
    connect(this, &AbstractTakeReader::readyRead, writer->worker(), &VeskWriterWorker::writeFrames);
    connect(writer, &VeskWriter::framesWrittenChanged, this, &AbstractTakeReader::goOn);
    return true;
}

/** Told again and again: the network manager forgets what it is told before it has begun. */
void AbstractTakeReader::limitReply()
{
    if (m_reply)
        m_reply->setReadBufferSize(std::max(ReplyBytes, 2 * std::min(recordSize(), MaxRecordBytes)));
}

void AbstractTakeReader::stop()
{
    m_stopped = true;
    // The reply is full and has no further data to tell of.
    if (m_heldBack && m_reply)
        m_reply->abort();
}

void AbstractTakeReader::replyReadyRead()
{
    // A camera that sends more than it was asked for would go on without end.
    if (m_stopped || m_framesRemaining <= 0)
        m_reply->abort();
    else if (!isFrames())
        takeError();
    else if (waitingBytes(recordSize()) > MaxWaitingBytes)
        m_heldBack = true;
    else
        takeFrames();
}

/** The worker has written a chunk. */
void AbstractTakeReader::goOn()
{
    if (!m_heldBack || !m_reply || m_stopped || waitingBytes(recordSize()) > MaxWaitingBytes)
        return;
    m_heldBack = false;
    takeFrames();
}

void AbstractTakeReader::replyFinished()
{
    const QNetworkReply::NetworkError error = m_reply->error();
    const bool failed = error != QNetworkReply::NoError && error != QNetworkReply::OperationCanceledError;
    if (failed || isCutShort()) {
        fail();
    } else if (m_reply->bytesAvailable() > 0) {
        // Little enough to take it whether or not the worker keeps up.
        takeFrames();
    }
    m_reply->deleteLater();
    m_reply = nullptr;
    m_memory.clear();
}

bool AbstractTakeReader::isFrames() const
{
    return m_reply->error() == QNetworkReply::NoError &&
           m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 200;
}

/** Bytes of a frame with its metadata, as the reply's headers tell. */
qint64 AbstractTakeReader::recordSize() const
{
    const char *size = m_reply->hasRawHeader("Img-Size") ? "Img-Size" : "Fr-Size";
    return qint64(m_reply->rawHeader(size).toUInt()) + m_reply->rawHeader("Meta-Size").toUInt();
}

/** Of a connection that closes in the middle of a long body the network manager may tell no error. */
bool AbstractTakeReader::isCutShort() const
{
    return isFrames() && m_framesRead * recordSize() + m_memory.begun() + m_reply->bytesAvailable() <
                             m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
}

qint64 AbstractTakeReader::waitingBytes(qint64 recordSize) const
{
    return (m_framesRead - m_job->writer()->framesWritten()) * recordSize;
}

/** Passes every whole frame on that has arrived; a part of one waits for the next turn. */
void AbstractTakeReader::takeFrames()
{
    if (!isFrames())
        return;
    const qint64 size = recordSize();
    if (size == 0 || size > MaxRecordBytes) {
        setFirstError(QStringLiteral("bad frame size"));
        m_reply->abort();
        return;
    }
    // All of it: the network manager, whose buffer is limited, brings no more before it has given all it has.
    if (!takeBytes())
        return;
    const qlonglong count = std::min(m_memory.begun() / size, m_framesRemaining);
    if (count <= 0)
        return;
    m_framesRead += count;
    m_framesRemaining -= count;
    emit readyRead(m_memory.chunk(count * size, m_framesRead), count, m_framesRead, m_framesRemaining);
}

/** Takes over what has arrived. */
bool AbstractTakeReader::takeBytes()
{
    const qint64 bytes = m_reply->bytesAvailable();
    char *room = m_memory.room(bytes, m_job->writer()->framesWritten());
    const qint64 got = m_reply->read(room, bytes);
    m_memory.arrived(std::max<qint64>(got, 0));
    return got == bytes;
}

/** What comes is no frame but an explanation, for which the end is awaited, unless it grows too long. */
void AbstractTakeReader::takeError()
{
    if (m_reply->bytesAvailable() < MaxErrorBytes)
        return;
    fail();
    // The end of the save may have closed the connection.
    if (m_reply)
        m_reply->abort();
}

void AbstractTakeReader::fail()
{
    setFirstError(answeredError(m_reply));
    m_job->writer()->readerFailed();
}

void AbstractTakeReader::setFirstError(const QString &text)
{
    if (error().isEmpty())
        setError(text);
}
