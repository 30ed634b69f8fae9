#include "tests/qml/keys.h"

#include "tests/qml/view_fixture.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

QQuickWindow *Keys::window() const
{
    QAccessible::setActive(true);
    if (!QGuiApplication::focusWindow()) {
        m_view.window()->requestActivate();
        (void)QTest::qWaitForWindowActive(m_view.window());
    }
    return qobject_cast<QQuickWindow *>(QGuiApplication::focusWindow());
}

void Keys::press(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(window(), key, modifiers);
}

void Keys::type(const QString &text) const
{
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, window(), Qt::Key_unknown, character, Qt::NoModifier);
}

void Keys::replace(const QString &text) const
{
    QTest::keySequence(window(), QKeySequence::SelectAll);
    press(Qt::Key_Delete);
    type(text);
}

/** Name of the first element from an item upwards that has one, and a role if one is given. */
static QString nameAbove(QQuickItem *item, QAccessible::Role role = QAccessible::NoRole)
{
    for (; item; item = item->parentItem()) {
        QAccessibleInterface *element = QAccessible::queryAccessibleInterface(item);
        if (element && !element->text(QAccessible::Name).isEmpty() &&
            (role == QAccessible::NoRole || element->role() == role))
            return element->text(QAccessible::Name);
    }
    return {};
}

QString Keys::focused() const
{
    // The text of a composed control has the focus in place of the control.
    return nameAbove(window()->activeFocusItem());
}

bool Keys::isIn(const QString &section) const
{
    return section.isEmpty() || nameAbove(window()->activeFocusItem(), QAccessible::Grouping) == section;
}

bool Keys::tabTo(const QString &name, const QString &section) const
{
    const auto there = [&] { return focused() == name && isIn(section); };
    for (int i = 0; i < 150 && !there(); ++i)
        press(Qt::Key_Tab);
    return there();
}

bool Keys::use(const QString &name, const QString &section) const
{
    if (!tabTo(name, section))
        return false;
    press(Qt::Key_Space);
    return true;
}

bool Keys::enter(const QString &field, const QString &text) const
{
    if (!tabTo(field))
        return false;
    replace(text);
    press(Qt::Key_Return);
    return true;
}

bool Keys::pickFromMenu(Qt::Key letter, const QString &entry) const
{
    press(letter, Qt::AltModifier);
    return pick(entry);
}

bool Keys::pick(const QString &entry) const
{
    QQuickWindow *where = window();
    const auto shown = [&] { return ViewFixture::element(where, entry, QAccessible::MenuItem); };
    if (!QTest::qWaitFor([&] { return shown() != nullptr; }))
        return false;
    const auto lit = [&] { return shown() && shown()->object()->property("highlighted").toBool(); };
    for (int i = 0; i < 20 && !lit(); ++i)
        press(Qt::Key_Down);
    if (!lit())
        return false;
    press(Qt::Key_Return);
    return true;
}

bool Keys::waitForDialog(const QString &title) const
{
    return QTest::qWaitFor(
        [&] { return m_view.dialog(title) && QGuiApplication::focusWindow() == m_view.dialog(title); });
}

bool Keys::waitForNoDialog(const QString &title) const
{
    return QTest::qWaitFor([&] { return !m_view.dialog(title); });
}
