#pragma once

#include "camera/vesk_value.h"
#include "tests/qml/view_fixture.h"
#include "tests/support/playback_source.h"

#include <QColor>

/** A value that can be written, as those of a take's adjustment. */
class WritableValue : public VeskValue
{
    Q_OBJECT
    Q_PROPERTY(QVariant value READ variant WRITE write NOTIFY valueChanged)

public:
    using VeskValue::VeskValue;
    void write(const QVariant &value) { setValue(value, false); }

signals:
    void valueChangedRemote();
};

/** A source whose look can be adjusted. */
class AdjustableSource : public PlaybackSource
{
public:
    AdjustableSource();
};

/** The view of a recorded source in a window of its own. The test moves the source's clock. */
class PlaybackFixture : public ViewFixture
{
    Q_OBJECT

public:
    static constexpr qint64 Second = 1'000'000'000;

    /** Shows a source that holds these frames. It plays, as every new one does. */
    PlaybackSource *start(int firstFr, int lastFr);
    /** Shows a source that is paused at its first frame. */
    PlaybackSource *startPaused(int firstFr, int lastFr);
    /** Shows a source whose values are not there yet, or only these. */
    PlaybackSource *startUnread(const QJsonObject &values = {});
    /** Shows the source in a new window, as when it is selected once more. */
    void show();
    PlaybackSource *source() const { return m_source.get(); }
    /** The source vanishes while it is shown. */
    void dropSource();
    /** Closes, forgets the panes, and gives the warnings: what a test ends with. */
    QStringList end();

    /** The item of an element, null if it is not shown. */
    QQuickItem *item(const QString &name, QAccessible::Role role = QAccessible::NoRole) const;
    /** Middle of an element in the window, (-1, -1) if it is not shown. */
    QPoint middle(const QString &name, QAccessible::Role role = QAccessible::NoRole) const;
    /** The left button goes down on a button, and up again at the same place. */
    bool press(const QString &name);
    void release();
    /** Text that a button or a field shows, and the colour of a button's. */
    QString shownText(const QString &name, QAccessible::Role role = QAccessible::NoRole) const;
    QColor textColor(const QString &name) const;
    /** Clicks into a field, replaces its text key by key and ends with a key; none for Key_unknown. */
    bool typeInto(const QString &name, const QString &text, Qt::Key end = Qt::Key_Return) const;
    bool enabled(const QString &name) const;
    QString focusedName() const;

private:
    std::unique_ptr<PlaybackSource> m_source;
    QPoint m_pressed;
};
