#include "tests/e2e/session.h"

#include <QElapsedTimer>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

QString Session::start(const QStringList &cameraOptions)
{
    if (const QString problem = screen.start(); !problem.isEmpty())
        return problem;
    if (const QString problem = camera.start(cameraOptions); !problem.isEmpty())
        return problem;
    return startProgram();
}

QString Session::startProgram()
{
    m_window = 0;
    if (!m_program.start(screen.display()))
        return u"the program does not start"_s;
    const auto shown = [this] {
        m_window = screen.window(u"VESK"_s).value_or(0);
        return m_window != 0;
    };
    if (!QTest::qWaitFor(shown, 30000))
        return u"the program shows no window"_s;
    screen.focus(m_window);
    const auto found = [this] {
        // The window comes up before it takes its place.
        m_geometry = screen.geometry(m_window);
        m_layout = WindowLayout(window());
        return m_layout.valid();
    };
    if (!QTest::qWaitFor(found, 15000))
        return u"the program shows no camera"_s;
    return {};
}

QImage Session::window() const
{
    return screen.picture().copy(m_geometry);
}

ShownPicture Session::shown(const Placement &placement) const
{
    return ShownPicture(window(), m_layout.pictureArea(), placement);
}

QPoint Session::onScreen(QPoint place) const
{
    return m_geometry.topLeft() + place;
}

static QString moveTo(QPoint place)
{
    return u"mousemove %1 %2"_s.arg(place.x()).arg(place.y());
}

void Session::move(QPoint place) const
{
    QVERIFY(screen.input(moveTo(onScreen(place))));
}

void Session::press(QPoint place) const
{
    QVERIFY(screen.input(moveTo(onScreen(place)) + " mousedown 1"_L1));
}

void Session::release() const
{
    QVERIFY(screen.input(u"mouseup 1"_s));
}

void Session::click(QPoint place, int button) const
{
    QVERIFY(screen.input(moveTo(onScreen(place)) + u" click %1"_s.arg(button)));
}

void Session::wheel(QPoint place, int x11Button, const QString &modifier) const
{
    QString command = moveTo(onScreen(place));
    command += modifier.isEmpty() ? u" click %1"_s.arg(x11Button)
                                  : u" keydown %2 click %1 keyup %2"_s.arg(x11Button).arg(modifier);
    QVERIFY(screen.input(command));
}

void Session::drag(QPoint from, QPoint to) const
{
    QVERIFY(screen.input(moveTo(onScreen(from)) + " mousedown 1 "_L1 + moveTo(onScreen((from + to) / 2)) +
                         u' ' + moveTo(onScreen(to)) + " mouseup 1"_L1));
}

void Session::key(const QString &keys) const
{
    QVERIFY(screen.input(u"key "_s + keys));
}

void Session::toggleSection(const QString &section, bool folded)
{
    click(m_layout.sectionHeader(section));
    m_layout.setFolded(section, folded);
}

bool Session::choose(const QString &row, int index, const QString &section) const
{
    const QRect box = m_layout.widget(row, section);
    const QPoint entry = WindowLayout::choice(box, index);
    // At the right, where boxes with a field have their arrow.
    click(QPoint(box.right() - 8, box.center().y()));
    move(entry);
    // The entry under the pointer is lit when the list is there.
    if (!wait([entry](const QImage &now) { return now.pixel(entry + QPoint(50, 8)) == 0xFFD25F15; }))
        return false;
    keepPicture(u"choice-"_s + QString(section + row).remove(u' ').remove(u'/'));
    click(entry);
    return true;
}

bool Session::type(const QString &row, const QString &text, const QString &section) const
{
    click(m_layout.widget(row, section).center() - QPoint(20, 0));
    key(u"ctrl+a"_s);
    if (!screen.type(text))
        return false;
    key(u"Return"_s);
    return true;
}

bool Session::pickFromFileMenu(int index) const
{
    const QPoint entry = m_layout.fileMenuItem(index);
    click(m_layout.fileMenu());
    move(entry);
    // The entry under the pointer is lit when the menu is there.
    if (!wait([entry](const QImage &now) { return now.pixel(entry + QPoint(80, 0)) == 0xFFD25F15; }))
        return false;
    click(entry);
    return true;
}

bool Session::wait(const std::function<bool(const QImage &)> &condition) const
{
    return QTest::qWaitFor([&] { return condition(window()); }, 10000);
}

QImage Session::resting(const QRect &part) const
{
    QImage last;
    QElapsedTimer unchanged;
    const bool rests = wait([&](const QImage &now) {
        const QImage shown = now.copy(part);
        if (std::exchange(last, shown) != shown)
            unchanged.start();
        return unchanged.isValid() && unchanged.elapsed() > 500;
    });
    return rests ? last : QImage();
}

bool Session::waitForLivePicture() const
{
    if (wait([this](const QImage &) { return shown().frameNumber().has_value(); }))
        return true;
    screen.keepPicture(u"no-live-picture"_s);
    return false;
}

int Session::count(const QImage &window, const QRect &part, const std::function<bool(QRgb)> &condition)
{
    int found = 0;
    const QRect inside = part & window.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x)
            found += condition(window.pixel(x, y)) ? 1 : 0;
    }
    return found;
}

void Session::keepPicture(const QString &name) const
{
    Screen::keep(window(), name);
}
