#pragma once

#include "image/playback_scrubber_handle_object.h"

#include <QQuickItem>
#include <QtQmlIntegration>

#include <limits>

/**
 * The logic of the bar that shows where the current frame lies in a take and lets it and the markers A and B
 * be dragged. It knows nothing of the model: a view writes the handles' frames and listens to moved(), which
 * tells of the user alone.
 */
class PlaybackScrubberTemplate : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qlonglong firstFr READ firstFr NOTIFY firstFrChanged)
    Q_PROPERTY(qlonglong lastFr READ lastFr NOTIFY lastFrChanged)
    Q_PROPERTY(PlaybackScrubberHandleObject *playHead READ playHead CONSTANT)
    Q_PROPERTY(PlaybackScrubberHandleObject *aMarker READ aMarker CONSTANT)
    Q_PROPERTY(PlaybackScrubberHandleObject *bMarker READ bMarker CONSTANT)
    Q_PROPERTY(PlaybackScrubberHandleObject *trigMarker READ trigMarker CONSTANT)

public:
    explicit PlaybackScrubberTemplate(QQuickItem *parent = nullptr);

    qlonglong firstFr() const { return m_firstFr; }
    qlonglong lastFr() const { return m_lastFr; }
    PlaybackScrubberHandleObject *playHead() const { return m_playHead; }
    PlaybackScrubberHandleObject *aMarker() const { return m_aMarker; }
    PlaybackScrubberHandleObject *bMarker() const { return m_bMarker; }
    PlaybackScrubberHandleObject *trigMarker() const { return m_trigMarker; }

    /** Whether a range has been set; until then the handles take no frames. */
    bool hasRange() const { return m_rangeSet; }
    /** Sets the range and opens it: A and the play head to its first frame, B to its last. */
    Q_INVOKABLE void setFrRange(qlonglong firstFr, qlonglong lastFr);

signals:
    void firstFrChanged();
    void lastFrChanged();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;
    void hoverEnterEvent(QHoverEvent *event) override;
    void hoverMoveEvent(QHoverEvent *event) override;
    void hoverLeaveEvent(QHoverEvent *event) override;

private:
    qlonglong frAt(const QPointF &point) const;
    /** The handle that a pointer here takes: the markers win over the play head. */
    PlaybackScrubberHandleObject *handleAt(const QPointF &point) const;
    void drag(PlaybackScrubberHandleObject *handle, const QPointF &point);
    void hover(PlaybackScrubberHandleObject *handle);
    void release();

    qlonglong m_firstFr = std::numeric_limits<qlonglong>::min();
    qlonglong m_lastFr = std::numeric_limits<qlonglong>::max();
    bool m_rangeSet = false;
    PlaybackScrubberHandleObject *m_playHead;
    PlaybackScrubberHandleObject *m_aMarker;
    PlaybackScrubberHandleObject *m_bMarker;
    PlaybackScrubberHandleObject *m_trigMarker;
};
