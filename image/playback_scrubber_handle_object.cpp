#include "image/playback_scrubber_handle_object.h"

#include "app/arithmetic.h"
#include "image/playback_scrubber_template.h"

#include <algorithm>

namespace
{
/** Unlike std::clamp, defined for limits that have crossed: the lower one wins. */
template <class Number> Number between(Number low, Number value, Number high)
{
    return std::max(low, std::min(value, high));
}
} // namespace

PlaybackScrubberHandleObject::PlaybackScrubberHandleObject(Type type, qlonglong fr,
                                                           PlaybackScrubberTemplate *scrubber)
    : QObject(scrubber), m_type(type), m_scrubber(scrubber), m_fr(fr),
      m_position(between(0.0, pointOnTrack(), 1.0))
{
}

void PlaybackScrubberHandleObject::setFr(qlonglong fr)
{
    if (m_scrubber->hasRange())
        resetFr(clamped(fr));
}

void PlaybackScrubberHandleObject::resetFr(qlonglong fr)
{
    if (fr == m_fr)
        return;
    m_fr = fr;
    emit frChanged();
    updatePosition();
}

qlonglong PlaybackScrubberHandleObject::clamped(qlonglong fr) const
{
    switch (m_type) {
    case PlayHead:
        return between(m_scrubber->aMarker()->fr(), fr, m_scrubber->bMarker()->fr());
    case AMarker:
        return between(m_scrubber->firstFr(), fr, m_scrubber->bMarker()->fr());
    case BMarker:
        return between(m_scrubber->aMarker()->fr(), fr, m_scrubber->lastFr());
    case TrigMarker:
        break;
    }
    return 0; // by definition the trigger frame
}

double PlaybackScrubberHandleObject::pointOnTrack() const
{
    // In doubles, because a range may be as wide as the whole 64-bit scale.
    const double first = double(m_scrubber->firstFr());
    const double length = double(m_scrubber->lastFr()) - first;
    return length == 0.0 ? 0.0 : (double(m_fr) - first) / length;
}

double PlaybackScrubberHandleObject::limited(double position) const
{
    switch (m_type) {
    case PlayHead:
        return between(m_scrubber->aMarker()->position(), position, m_scrubber->bMarker()->position());
    case AMarker:
        return between(0.0, position, m_scrubber->bMarker()->position());
    case BMarker:
        return between(m_scrubber->aMarker()->position(), position, 1.0);
    case TrigMarker:
        break;
    }
    return between(0.0, position, 1.0);
}

void PlaybackScrubberHandleObject::updatePosition()
{
    const double position = limited(pointOnTrack());
    if (fuzzyEqual(position, m_position))
        return;
    m_position = position;
    emit positionChanged();
}

void PlaybackScrubberHandleObject::setPressed(bool pressed)
{
    if (pressed == m_pressed)
        return;
    m_pressed = pressed;
    emit pressedChanged();
}

void PlaybackScrubberHandleObject::setHovered(bool hovered)
{
    if (hovered == m_hovered)
        return;
    m_hovered = hovered;
    emit hoveredChanged();
}

void PlaybackScrubberHandleObject::setHandle(QQuickItem *handle)
{
    if (handle == m_handle)
        return;
    m_handle = handle;
    if (handle && !handle->parentItem())
        handle->setParentItem(m_scrubber);
    emit handleChanged();
}

bool PlaybackScrubberHandleObject::contains(const QPointF &point) const
{
    return m_handle && m_handle->contains(m_handle->mapFromItem(m_scrubber, point));
}
