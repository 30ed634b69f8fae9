#include "save/video_output.h"

#include "save/whole_file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

/** Asking for room costs a call of the system, so it is asked for in large pieces. */
static constexpr qint64 PieceBytes = 16 * 1024 * 1024;

int VideoOutput::open(const QString &path)
{
    m_file.setFileName(path);
    errno = 0;
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return AVERROR(errno != 0 ? errno : EEXIST);
    const int code = avio_open(&m_context, path.toUtf8().constData(), AVIO_FLAG_WRITE);
    if (code < 0)
        remove();
    return code;
}

bool VideoOutput::reserve(qint64 bytes)
{
    const qint64 end = avio_tell(m_context) + bytes;
    return !m_reserves || end <= m_reservedEnd || extendTo(end + PieceBytes) || extendTo(end);
}

bool VideoOutput::extendTo(qint64 end)
{
    int result = 0;
    do
        result = fallocate(m_file.handle(), FALLOC_FL_KEEP_SIZE, m_reservedEnd, end - m_reservedEnd);
    while (result != 0 && errno == EINTR);
    if (result == 0)
        m_reservedEnd = end;
    else if (errno != ENOSPC && errno != EDQUOT && errno != EFBIG)
        m_reserves = false;
    return result == 0 || !m_reserves;
}

bool VideoOutput::close()
{
    if (!m_context)
        return false;
    const bool written = avio_closep(&m_context) >= 0;
    // Gives the room behind the end back.
    const bool trimmed = ftruncate(m_file.handle(), m_file.size()) == 0;
    return closeWhole(m_file) && written && trimmed;
}

void VideoOutput::discard()
{
    avio_closep(&m_context);
    m_file.close();
}

void VideoOutput::remove()
{
    discard();
    m_file.remove();
}
