#include "image/playback_scrubber_template.h"

#include "app/arithmetic.h"

#include <QCursor>

#include <algorithm>
#include <cmath>

using Handle = PlaybackScrubberHandleObject;

PlaybackScrubberTemplate::PlaybackScrubberTemplate(QQuickItem *parent)
    : QQuickItem(parent), m_playHead(new Handle(Handle::PlayHead, m_firstFr, this)),
      m_aMarker(new Handle(Handle::AMarker, m_firstFr, this)),
      m_bMarker(new Handle(Handle::BMarker, m_lastFr, this)),
      m_trigMarker(new Handle(Handle::TrigMarker, 0, this))
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
}

void PlaybackScrubberTemplate::setFrRange(qlonglong firstFr, qlonglong lastFr)
{
    if ((firstFr == m_firstFr && lastFr == m_lastFr) || firstFr > lastFr)
        return;
    m_firstFr = firstFr;
    m_lastFr = lastFr;
    emit firstFrChanged();
    emit lastFrChanged();
    m_rangeSet = true;
    m_aMarker->resetFr(firstFr);
    m_bMarker->resetFr(lastFr);
    m_playHead->resetFr(firstFr);
    m_trigMarker->resetFr(0);
    // Each once more, now that its neighbours have left the places of the range before.
    for (Handle *handle : {m_aMarker, m_bMarker, m_playHead, m_trigMarker})
        handle->updatePosition();
}

qlonglong PlaybackScrubberTemplate::frAt(const QPointF &point) const
{
    // The whole width counts, although the track is inset, so that both ends are easily hit.
    const double part = width() > 0.0 ? point.toPoint().x() / width() : 0.0;
    const double length = double(m_lastFr) - double(m_firstFr);
    constexpr double Farthest = 9.0e18; // fits the frame scale
    const double offset = std::clamp(std::round(length * part), -Farthest, Farthest);
    return saturatedSum(m_firstFr, qint64(offset));
}

PlaybackScrubberHandleObject *PlaybackScrubberTemplate::handleAt(const QPointF &point) const
{
    for (Handle *handle : {m_aMarker, m_bMarker, m_playHead}) {
        if (handle->contains(point))
            return handle;
    }
    return nullptr;
}

void PlaybackScrubberTemplate::drag(Handle *handle, const QPointF &point)
{
    const qlonglong fr = frAt(point);
    handle->setFr(fr);
    emit handle->moved();
    if (handle == m_playHead)
        return;
    // The play head goes along, so that the frame at which the marker is being placed is seen.
    m_playHead->setFr(fr);
    emit m_playHead->moved();
}

void PlaybackScrubberTemplate::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    setKeepMouseGrab(true);
    Handle *handle = handleAt(event->position());
    if (handle == m_aMarker || handle == m_bMarker) {
        handle->setPressed(true);
        setCursor(Qt::SizeHorCursor);
        return;
    }
    m_playHead->setPressed(true);
    drag(m_playHead, event->position());
}

void PlaybackScrubberTemplate::mouseMoveEvent(QMouseEvent *event)
{
    for (Handle *handle : {m_playHead, m_aMarker, m_bMarker}) {
        if (handle->pressed()) {
            drag(handle, event->position());
            return;
        }
    }
}

void PlaybackScrubberTemplate::mouseReleaseEvent(QMouseEvent *)
{
    release();
}

void PlaybackScrubberTemplate::mouseUngrabEvent()
{
    release();
}

void PlaybackScrubberTemplate::release()
{
    for (Handle *handle : {m_aMarker, m_bMarker, m_playHead})
        handle->setPressed(false);
}

void PlaybackScrubberTemplate::hoverEnterEvent(QHoverEvent *event)
{
    hover(handleAt(event->position()));
}

void PlaybackScrubberTemplate::hoverMoveEvent(QHoverEvent *event)
{
    hover(handleAt(event->position()));
}

void PlaybackScrubberTemplate::hoverLeaveEvent(QHoverEvent *)
{
    hover(nullptr);
}

void PlaybackScrubberTemplate::hover(Handle *hovered)
{
    for (Handle *handle : {m_aMarker, m_bMarker, m_playHead})
        handle->setHovered(handle == hovered);
    if (hovered == m_aMarker || hovered == m_bMarker)
        setCursor(Qt::SizeHorCursor);
    else
        unsetCursor();
}
