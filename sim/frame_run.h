#pragma once

#include "sim/footage.h"

#include <QByteArray>
#include <QFile>

#include <memory>

namespace q4sim
{

/// Frames of a take, back to back, as one transfer carries them; drawn when they are read, so that a long
/// take costs no memory. Not safe from several threads at once, but needs no lock on the camera.
class FrameRun
{
public:
    /// Frames first to first + count - 1 of a take, drawn by `renderer`.
    FrameRun(const std::shared_ptr<const Footage> &footage, std::shared_ptr<const SceneRenderer> renderer,
             qint64 first, qint64 count);

    qint64 recordSize() const { return m_recordSize; } ///< bytes of one frame
    qint64 size() const { return m_size; }             ///< bytes of all frames
    void cut(qint64 bytes);                            ///< off the end

    /// The take was deleted; its frames are still drawn, but a camera has them no more.
    bool gone() const { return !m_kept && m_footage.expired(); }
    /// Lives on when the take is deleted.
    void keep() { m_kept = true; }

    /// Copies up to `max` bytes from byte `at` on; returns how many, 0 at the end.
    qint64 read(qint64 at, char *data, qint64 max);
    QByteArray readAll();

    /// Puts up to `max` bytes from byte `at` on into a connection that does not wait; returns how many it
    /// took.
    qint64 send(int socket, qint64 at, qint64 max);

private:
    void draw(qint64 frame);
    void keepPicture();
    qint64 sendPart(int socket, qint64 at, qint64 max);

    std::weak_ptr<const Footage> m_footage;
    std::shared_ptr<const SceneRenderer> m_renderer;
    Footage m_times; ///< without the description
    qint64 m_first;
    qint64 m_recordSize;
    qint64 m_size;
    bool m_kept = false;
    QByteArray m_record; ///< of m_drawn
    qint64 m_drawn = 0;
    bool m_allAlike = false; ///< frames differ in their metadata alone
    QFile m_picture;         ///< that of frames that are all alike, from the first send() on
};

} // namespace q4sim
