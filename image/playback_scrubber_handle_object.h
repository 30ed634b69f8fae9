#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QtQmlIntegration>

class PlaybackScrubberTemplate;

/**
 * One handle of a scrubber: the frame at which it stands, its place along the track and how it is being used.
 * What it looks like is an item that the view hands in. Lives as long as its scrubber.
 */
class PlaybackScrubberHandleObject : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int type READ type CONSTANT)
    Q_PROPERTY(qlonglong fr READ fr WRITE setFr NOTIFY frChanged)
    Q_PROPERTY(double position READ position NOTIFY positionChanged)
    Q_PROPERTY(bool pressed READ pressed WRITE setPressed NOTIFY pressedChanged)
    Q_PROPERTY(bool hovered READ hovered WRITE setHovered NOTIFY hoveredChanged)
    Q_PROPERTY(QQuickItem *handle READ handle WRITE setHandle NOTIFY handleChanged)

public:
    enum Type { PlayHead = 0, AMarker = 1, BMarker = 2, TrigMarker = 3 };

    PlaybackScrubberHandleObject(Type type, qlonglong fr, PlaybackScrubberTemplate *scrubber);

    int type() const { return m_type; }
    qlonglong fr() const { return m_fr; }
    /** Kept where this handle may stand; ignored until the scrubber has a range. */
    void setFr(qlonglong fr);
    /** As the start of a new range, which knows no other handles yet. */
    void resetFr(qlonglong fr);

    /** 0 at the first frame to 1 at the last, between its neighbours. */
    double position() const { return m_position; }
    void updatePosition();

    bool pressed() const { return m_pressed; }
    void setPressed(bool pressed);
    bool hovered() const { return m_hovered; }
    void setHovered(bool hovered);

    QQuickItem *handle() const { return m_handle; }
    /** An item without a parent item becomes a child of the scrubber. */
    void setHandle(QQuickItem *handle);
    /** Whether the item lies under a point of the scrubber. */
    bool contains(const QPointF &point) const;

signals:
    void frChanged();
    void positionChanged();
    void pressedChanged();
    void hoveredChanged();
    void handleChanged();
    /** The user has moved it. */
    void moved();

private:
    qlonglong clamped(qlonglong fr) const;
    double pointOnTrack() const;
    double limited(double position) const;

    Type m_type;
    PlaybackScrubberTemplate *m_scrubber;
    qlonglong m_fr;
    double m_position;
    bool m_pressed = false;
    bool m_hovered = false;
    QPointer<QQuickItem> m_handle;
};
