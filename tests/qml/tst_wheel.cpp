#include "app/vesk_app.h"
#include "save/save_manager.h"
#include "sim/camera.h"
#include "take/take.h"
#include "tests/qml/any_source_fixture.h"
#include "tests/qml/vesk_file_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

/** What is longer than its area is scrolled by the wheel and by its scroll bar. */
class TestWheel : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void wheelScrolls_data();
    void wheelScrolls();
    void scrollBarScrolls_data();
    void scrollBarScrolls();

private:
    enum What { Panel, Tabs, Saves, Listing, Dialog };
    QQuickItem *start(int what);
    static QQuickItem *viewOf(QAccessibleInterface *inside);
    QQuickItem *startTabs();
    QQuickItem *startSaves();
    QQuickItem *startListing();
    QQuickItem *startDialog();

    AnySourceFixture m_view;
};

/** The view that scrolls an element, null if there is none. */
QQuickItem *TestWheel::viewOf(QAccessibleInterface *inside)
{
    QQuickItem *item = inside ? qobject_cast<QQuickItem *>(inside->object()) : nullptr;
    while (item && !item->inherits("QQuickFlickable"))
        item = item->parentItem();
    return item;
}

/** The view, longer than its area and at its beginning. */
QQuickItem *TestWheel::start(int what)
{
    QQuickItem *view = nullptr;
    if (what == Panel && m_view.startUnfolded())
        view = viewOf(m_view.element(u"Acquisition"_s, QAccessible::Grouping));
    else if (what == Tabs)
        view = startTabs();
    else if (what == Saves)
        view = startSaves();
    else if (what == Listing)
        view = startListing();
    else if (what == Dialog)
        view = startDialog();
    if (view)
        ViewFixture::settle(view->window());
    return view;
}

QQuickItem *TestWheel::startTabs()
{
    if (!m_view.show(AnySourceFixture::TheFile))
        return nullptr;
    for (int i = 0; i < 20; ++i)
        VeskFileFixture::openFile(m_view.path(AnySourceFixture::tabName(AnySourceFixture::TheFile)));
    QAccessibleInterface *tab = nullptr;
    return QTest::qWaitFor(
               [&] { return (tab = m_view.element(u"a.vesk"_s, QAccessible::PageTab)) != nullptr; })
               ? viewOf(tab)
               : nullptr;
}

QQuickItem *TestWheel::startSaves()
{
    Take *take = m_view.startWithTake(1);
    if (!take)
        return nullptr;
    for (int i = 0; i < 40; ++i)
        VeskApp::instance()->saveManager()->createSaveJob(take, 0, 1, SaveManager::FileDest, Util::FormatVesk,
                                                          Util::CodecVesk, 30, 15, u"shot%1"_s.arg(i),
                                                          u"/nowhere"_s);
    if (!m_view.click(u"Save progress"_s) ||
        !QTest::qWaitFor([this] { return m_view.hasRow(u"shot0.vesk"_s); }))
        return nullptr;
    return viewOf(m_view.element(u"shot0.vesk"_s, QAccessible::Row));
}

QQuickItem *TestWheel::startListing()
{
    q4sim::Config config;
    config.recordings.clear();
    for (int i = 10; i < 60; ++i)
        config.recordings.append(
            {u"shot%1.vesk"_s.arg(i), 1735732800, {.first = 0, .last = 9, .triggerNs = 1735732000000000000}});
    if (!m_view.startWithDrive(config) || !m_view.clickIn(u"SSD"_s, u"Open SSD Take"_s) ||
        !QTest::qWaitFor([this] { return m_view.listing() && m_view.row(u"shot10.vesk"_s); }))
        return nullptr;
    return viewOf(m_view.inListing(u"shot10.vesk"_s, QAccessible::ListItem));
}

/** As on a display that is too small for it. */
QQuickItem *TestWheel::startDialog()
{
    if (!m_view.startWithTake(1) || !m_view.openSave())
        return nullptr;
    QQuickWindow *dialog = m_view.saveDialog();
    dialog->setMinimumHeight(250);
    dialog->setMaximumHeight(250);
    dialog->resize(dialog->width(), 250);
    return QTest::qWaitFor([dialog] { return dialog->height() == 250; })
               ? viewOf(ViewFixture::element(dialog, u"File Name"_s, QAccessible::EditableText))
               : nullptr;
}

void TestWheel::wheelScrolls_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("panel of a camera") << int(Panel);
    QTest::newRow("tabs") << int(Tabs);
    QTest::newRow("saves") << int(Saves);
    QTest::newRow("recordings on the drive") << int(Listing);
    QTest::newRow("save dialog") << int(Dialog);
}

void TestWheel::wheelScrolls()
{
    QFETCH(const int, what);
    QQuickItem *view = start(what);
    QVERIFY(view);
    const auto scrolled = [view] { return view->property("contentY").toDouble(); };
    const double before = scrolled();
    const QPointF middle = view->mapToScene({view->width() / 2, view->height() / 2});
    QTest::wheelEvent(view->window(), middle, {0, -120});
    QTRY_VERIFY(scrolled() > before + 10);
    QTRY_VERIFY(!view->property("moving").toBool());
    for (int i = 0; i < 4; ++i)
        QTest::wheelEvent(view->window(), middle, {0, 120});
    // It ends where it began, and not beyond.
    QTRY_COMPARE(scrolled(), before);
    QTRY_VERIFY(!view->property("moving").toBool());
    QCOMPARE(scrolled(), before);
}

void TestWheel::scrollBarScrolls_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("tabs") << int(Tabs);
    QTest::newRow("saves") << int(Saves);
    QTest::newRow("recordings on the drive") << int(Listing);
    QTest::newRow("save dialog") << int(Dialog);
}

void TestWheel::scrollBarScrolls()
{
    QFETCH(const int, what);
    QQuickItem *view = start(what);
    QVERIFY(view);
    const QList<QQuickItem *> children = view->childItems();
    const auto found = std::ranges::find_if(children, [](const QQuickItem *child) {
        return child->inherits("QQuickScrollBar") && child->height() > child->width();
    });
    QVERIFY(found != children.end());
    const QQuickItem *bar = *found;
    const double before = view->property("contentY").toDouble();
    const auto pointOn = [&](double part) {
        return bar->mapToScene({bar->width() / 2, bar->height() * part}).toPoint();
    };
    const double grip = bar->property("size").toDouble() / 2;
    QVERIFY2(grip < 0.5, qPrintable(QString::number(grip)));
    QTest::mousePress(view->window(), Qt::LeftButton, {}, pointOn(grip));
    for (const double part : {0.1, 0.5, 1.5})
        QTest::mouseMove(view->window(), pointOn(grip + part));
    QTest::mouseRelease(view->window(), Qt::LeftButton, {}, pointOn(grip + 1.5));
    const auto end = [view] {
        return view->property("originY").toDouble() + view->property("contentHeight").toDouble() -
               view->height();
    };
    QVERIFY(end() > before + 100);
    QTRY_VERIFY(qAbs(view->property("contentY").toDouble() - end()) < 2);
}

VIEW_TEST_MAIN(TestWheel)
#include "tst_wheel.moc"
