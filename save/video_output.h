#pragma once

#include "save/av_pointers.h"

#include <QFile>

/**
 * The file that a container is written to: made anew, and with room kept behind it on the disk for what the
 * container puts at its end, so that a film that fills the disk can still be closed and played.
 */
class VideoOutput
{
public:
    VideoOutput() = default;
    ~VideoOutput() { discard(); }
    Q_DISABLE_COPY_MOVE(VideoOutput)

    /** 0, or the library's code; a file that is there already is refused, and stays as it is. */
    int open(const QString &path);
    AVIOContext *context() const { return m_context; }

    /** Makes sure of room for so many bytes from where the next one goes. False when the disk has none. */
    bool reserve(qint64 bytes);
    /** Closes the file; false when not all of it is on the disk, or nobody can find it. */
    bool close();
    /** Closes the file, with what is on the disk by then. */
    void discard();
    /** Closes the file and deletes it. */
    void remove();

private:
    bool extendTo(qint64 end);

    QFile m_file;
    AVIOContext *m_context = nullptr;
    /** Where the room that is kept ends. */
    qint64 m_reservedEnd = 0;
    /** False on a file system that keeps no room. */
    bool m_reserves = true;
};
