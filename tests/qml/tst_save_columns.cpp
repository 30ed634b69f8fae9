#include "app/fonts.h"
#include "app/vesk_app.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "tests/qml/save_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QColor>
#include <QFont>
#include <QFontMetricsF>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The titles of the list of saves, and what is told of a save that runs. */
class TestSaveColumns : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void everyRuleWidensItsColumn_data();
    void everyRuleWidensItsColumn();
    void titleLightsUpUnderThePointer();
    void runningSaveTellsItsPercentage();
    void bannerHasRoomForTheWholePercentage();

private:
    bool showList();
    QRect title(const QString &name) const;
    SaveJob *startSlowSave();

    SaveFixture m_view;
};

bool TestSaveColumns::showList()
{
    m_view.startFolder();
    m_view.open();
    return m_view.click(u"Save progress"_s) &&
           QTest::qWaitFor([this] { return m_view.shows(u"Source"_s, QAccessible::ColumnHeader); });
}

/** Where a title lies in the window. */
QRect TestSaveColumns::title(const QString &name) const
{
    ViewFixture::settle(m_view.window());
    const QAccessibleInterface *found = m_view.element(name, QAccessible::ColumnHeader);
    return found ? found->rect().translated(-m_view.window()->position()) : QRect();
}

/** A save whose frames come one by one, slowly. */
SaveJob *TestSaveColumns::startSlowSave()
{
    if (!m_view.startWithTake(1))
        return nullptr;
    m_view.simulated()->setFault(q4sim::Route::Xfer,
                                 {.kind = q4sim::FaultKind::Drip, .ms = 200, .bytes = 300'000});
    return m_view.saveAs(u"shot"_s, u"VESK"_s);
}

void TestSaveColumns::everyRuleWidensItsColumn_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("width");
    QTest::newRow("destination") << u"Save To"_s << 72;
    QTest::newRow("name") << u"Name"_s << 240;
    QTest::newRow("status") << u"Status"_s << 200;
    QTest::newRow("camera") << u"Camera"_s << 200;
    QTest::newRow("source") << u"Source"_s << 240;
}

void TestSaveColumns::everyRuleWidensItsColumn()
{
    QFETCH(const QString, name);
    QFETCH(const int, width);
    QVERIFY(showList());
    const QStringList names = {u"Save To"_s, u"Name"_s, u"Status"_s, u"Camera"_s, u"Source"_s};
    QList<int> others;
    for (const QString &other : names)
        others.append(title(other).width());
    QCOMPARE(title(name).width(), width);
    const auto drag = [&](int by) {
        // On the rule, and a point within the two on either side of it.
        const QPoint from = title(name).topRight() + QPoint(by > 0 ? -1 : 1, 14);
        QTest::mouseMove(m_view.window(), from);
        QTRY_COMPARE(m_view.window()->cursor().shape(), Qt::SplitHCursor);
        QTest::mousePress(m_view.window(), Qt::LeftButton, {}, from);
        for (const int part : {4, 2, 1})
            QTest::mouseMove(m_view.window(), from + QPoint(by / part, 0));
        QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, from + QPoint(by, 0));
    };
    drag(-4);
    QCOMPARE(title(name).width(), width - 4);
    drag(-700);
    QCOMPARE(title(name).width(), 64);
    drag(60);
    QCOMPARE(title(name).width(), 124);
    others[names.indexOf(name)] = 124;
    for (qsizetype i = 0; i < names.size(); ++i)
        QCOMPARE(title(names[i]).width(), others[i]);
}

void TestSaveColumns::titleLightsUpUnderThePointer()
{
    QVERIFY(showList());
    const QStringList names = {u"Save To"_s, u"Name"_s, u"Status"_s, u"Camera"_s, u"Source"_s};
    const auto color = [this](const QString &name) {
        return m_view.element(name, QAccessible::ColumnHeader)->object()->property("color").value<QColor>();
    };
    for (const QString &pointed : names) {
        QTest::mouseMove(m_view.window(), title(pointed).center());
        QTRY_COMPARE(color(pointed), QColor(u"#323232"_s));
        for (const QString &other : names) {
            if (other != pointed)
                QTRY_COMPARE(color(other).alpha(), 0);
        }
    }
}

void TestSaveColumns::runningSaveTellsItsPercentage()
{
    SaveJob *job = startSlowSave();
    QVERIFY(job);
    for (const double least : {5.0, 25.0}) {
        QTRY_VERIFY_WITH_TIMEOUT(job->progress() >= least, 20'000);
        QCOMPARE(job->state(), SaveJob::Saving);
        const QString percent = u"%1%"_s.arg(job->progress(), 0, 'f', 0);
        const QQuickItem *label = m_view.itemWithText(percent);
        QVERIFY2(label, qPrintable(percent));
        QCOMPARE(label->width(), 32.0);
        QAccessibleInterface *bar = m_view.element(u"Save progress"_s, QAccessible::ProgressBar);
        QVERIFY(bar);
        QCOMPARE(bar->rect().height(), 8);
        QCOMPARE(bar->object()->property("value").toDouble(), job->progress());
        QCOMPARE(bar->object()->property("to").toDouble(), 100.0);
        // They do not lie on each other.
        const int labelLeft = qRound(label->mapToScene({}).x());
        QVERIFY(m_view.window()->mapFromGlobal(bar->rect().bottomRight()).x() < labelLeft);
    }
    m_view.simulated()->clearFaults();
    job->cancel();
}

void TestSaveColumns::bannerHasRoomForTheWholePercentage()
{
    initFonts(*VeskApp::instance());
    SaveJob *job = startSlowSave();
    QVERIFY(job);
    QVERIFY(m_view.click(u"Take 2"_s));
    QTRY_VERIFY(m_view.itemWithText(u"SAVE IN PROGRESS..."_s));
    ViewFixture::settle(m_view.window());
    const QQuickItem *text = m_view.itemWithText(u"SAVE IN PROGRESS..."_s);
    const QQuickItem *box = text->parentItem();
    QQuickItem *percent = m_view.itemWithText(u"%1%"_s.arg(job->progress(), 0, 'f', 0));
    QVERIFY(percent);
    QCOMPARE(percent->parentItem(), box);
    QCOMPARE(percent->property("font").value<QFont>().family(), u"Inter"_s);
    const double right = percent->x() + percent->width();
    const double whole = QFontMetricsF(percent->property("font").value<QFont>()).horizontalAdvance(u"100%"_s);
    QVERIFY2(text->x() + text->width() < right - whole,
             qPrintable(u"%1 to %2"_s.arg(text->x() + text->width()).arg(right - whole)));
    // Inside the border, which is 2 wide.
    QVERIFY(text->x() >= 2 && right <= box->width() - 2);
    m_view.simulated()->clearFaults();
    job->cancel();
}

VIEW_TEST_MAIN(TestSaveColumns)
#include "tst_save_columns.moc"
