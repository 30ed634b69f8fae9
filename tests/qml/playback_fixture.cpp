#include "tests/qml/playback_fixture.h"

#include "app/vesk_app.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

static constexpr char Document[] = R"(
import QtQuick
import QtQuick.Controls
import Vesk

ApplicationWindow {
    id: window

    required property PlaybackVeskObject source

    width: 1040
    height: 720
    visible: true

    PlaybackView {
        anchors.fill: parent
        focus: true
        source: window.source

        PlaybackControlBar {
            source: window.source
            label: "Take"
            content: ControlGrid {
                PlaybackInfoRows {
                    source: window.source
                }
            }
        }
    }
}
)";

namespace
{
class WritableAdjModel : public ImgAdjModel
{
public:
    explicit WritableAdjModel(PlaybackSource *source) : ImgAdjModel(source)
    {
        createValues<WritableValue>(source);
    }
};
} // namespace

AdjustableSource::AdjustableSource()
{
    auto *model = new WritableAdjModel(this);
    setImgAdjModel(model);
    setVeskFrame(new VeskFrame(&model->data(), this));
    connect(model, &ImgAdjModel::imgAdjUpdated, this, &PlaybackVeskObject::refreshIfPaused);
}

PlaybackSource *PlaybackFixture::startUnread(const QJsonObject &values)
{
    m_source = std::make_unique<AdjustableSource>();
    m_source->answersAtOnce = true;
    m_source->updateValues(values);
    m_source->setSelected(true);
    show();
    return window() ? m_source.get() : nullptr;
}

void PlaybackFixture::show()
{
    close();
    openDocument(Document, u"source"_s, QVariant::fromValue<PlaybackVeskObject *>(m_source.get()));
}

PlaybackSource *PlaybackFixture::start(int firstFr, int lastFr)
{
    if (startUnread())
        m_source->open(firstFr, lastFr);
    return window() ? m_source.get() : nullptr;
}

PlaybackSource *PlaybackFixture::startPaused(int firstFr, int lastFr)
{
    PlaybackSource *started = start(firstFr, lastFr);
    if (started)
        started->pause();
    return started;
}

void PlaybackFixture::dropSource()
{
    m_source.reset();
}

QStringList PlaybackFixture::end()
{
    close();
    m_source.reset();
    VeskApp::instance()->settings()->remove(u"playback"_s);
    return warnings();
}

QQuickItem *PlaybackFixture::item(const QString &name, QAccessible::Role role) const
{
    QAccessibleInterface *found = element(name, role);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

QPoint PlaybackFixture::middle(const QString &name, QAccessible::Role role) const
{
    settle(window());
    QAccessibleInterface *found = element(name, role);
    return found ? centre(window(), found) : QPoint(-1, -1);
}

bool PlaybackFixture::press(const QString &name)
{
    m_pressed = middle(name, QAccessible::Button);
    QTest::mouseMove(window(), m_pressed);
    QTest::mousePress(window(), Qt::LeftButton, {}, m_pressed);
    return m_pressed.x() >= 0;
}

void PlaybackFixture::release()
{
    QTest::mouseRelease(window(), Qt::LeftButton, {}, m_pressed);
}

static QVariant contentProperty(QQuickItem *item, const char *name)
{
    if (!item || item->inherits("QQuickTextInput"))
        return item ? item->property(name) : QVariant();
    return item->property("contentItem").value<QQuickItem *>()->property(name);
}

QString PlaybackFixture::shownText(const QString &name, QAccessible::Role role) const
{
    return contentProperty(item(name, role), "text").toString();
}

QColor PlaybackFixture::textColor(const QString &name) const
{
    return contentProperty(item(name, QAccessible::Button), "color").value<QColor>();
}

bool PlaybackFixture::typeInto(const QString &name, const QString &text, Qt::Key end) const
{
    if (!click(window(), element(name, QAccessible::EditableText)))
        return false;
    QTest::keySequence(window(), QKeySequence::SelectAll);
    QTest::keyClick(window(), Qt::Key_Delete);
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, window(), Qt::Key_unknown, character, Qt::NoModifier);
    if (end != Qt::Key_unknown)
        QTest::keyClick(window(), end);
    return true;
}

bool PlaybackFixture::enabled(const QString &name) const
{
    QQuickItem *found = item(name);
    return found && found->isEnabled();
}

QString PlaybackFixture::focusedName() const
{
    // The text of a composed control has the focus in place of the control.
    for (QQuickItem *item = window()->activeFocusItem(); item; item = item->parentItem()) {
        QAccessibleInterface *element = QAccessible::queryAccessibleInterface(item);
        if (element && !element->text(QAccessible::Name).isEmpty())
            return element->text(QAccessible::Name);
    }
    return {};
}
