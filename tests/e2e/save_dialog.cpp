#include "tests/e2e/save_dialog.h"

#include <QTest>

using namespace Qt::StringLiterals;

constexpr QPoint nameField(300, 332);
constexpr QPoint saveButton(122, 615);
constexpr QPoint oneRow(0, 34);

std::optional<Screen::Window> SaveDialog::window() const
{
    return m_session.screen.window(u"Save"_s, QSize(480, 640));
}

bool SaveDialog::open(QPoint button, bool ofFile)
{
    m_ofFile = ofFile;
    m_session.click(button);
    if (!QTest::qWaitFor([this] { return window().has_value(); }, 10000))
        return false;
    m_session.screen.focus(*window());
    QTest::qWait(300); // until it is drawn
    return true;
}

bool SaveDialog::click(QPoint place) const
{
    if (!window())
        return false;
    const QPoint at = m_session.screen.geometry(*window()).topLeft() + place;
    return m_session.screen.input(u"mousemove %1 %2 sleep 0.1 click 1 sleep 0.2"_s.arg(at.x()).arg(at.y()));
}

bool SaveDialog::setName(const QString &name) const
{
    return click(m_ofFile ? nameField - oneRow : nameField) && m_session.screen.input(u"key ctrl+a"_s) &&
           m_session.screen.type(name) && m_session.screen.input(u"key Tab"_s);
}

/// The list opens over the box, entry by entry 27 high.
bool SaveDialog::pick(QPoint box, int index) const
{
    const QPoint at = m_ofFile ? box - oneRow : box;
    return click(at) && m_session.screen.input(u"sleep 0.2"_s) && click(at + QPoint(0, 2 + 27 * index));
}

bool SaveDialog::save() const
{
    return click(saveButton) && QTest::qWaitFor([this] { return !window(); }, 10000);
}
