#include "app/vesk_app.h"
#include "camera/camera.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "take/take.h"
#include "tests/qml/save_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;

/** Bytes of a frame of the simulated camera at 640x480 with its metadata, or a little less. */
static constexpr qint64 OneFrame = 300'000;

/** The list of saves, and what the window tells of them elsewhere. */
class TestSaveProgress : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void listOpensFrom_data();
    void listOpensFrom();
    void finishedSaveIsComplete();
    void savesOfOneCameraRunOneByOne();
    void savingIsCancelledAndThenRemoved();
    void waitingSaveIsRemovedAtOnce();
    void failedSaveTellsWhy();
    void nativeFileOpensFromTheList();
    void takeThatIsDeletedFailsItsSave();
    void cameraThatIsDisconnectedFailsItsSaves();
    void bannerTellsOfTheSaveOverThePicture();
    void columnsAreWidenedByTheirRules();
    void rowsAndHeaderHaveTheirSizes();
    void rowLightsUpUnderThePointer();

private:
    /** Frames then come one by one, slowly. */
    void slowDown(int milliseconds = 200)
    {
        m_view.simulated()->setFault(q4sim::Route::Xfer,
                                     {.kind = FaultKind::Drip, .ms = milliseconds, .bytes = OneFrame});
    }
    void speedUp() { m_view.simulated()->setFault(q4sim::Route::Xfer, {}); }
    QQuickItem *glyph(const QString &text) const { return m_view.itemWithText(text); }

    SaveFixture m_view;
};

void TestSaveProgress::listOpensFrom_data()
{
    QTest::addColumn<QStringList>("clicks");
    QTest::newRow("button above the tabs") << QStringList{u"Save progress"_s};
    QTest::newRow("menu of a take") << QStringList{u"View"_s, u"Save Progress"_s};
    QTest::newRow("menu of a camera") << QStringList{u"Simulated Q4"_s, u"View"_s, u"Save Progress"_s};
    QTest::newRow("menu of nothing") << QStringList{u"Help"_s, u"About VESK"_s, u"View"_s,
                                                    u"Save Progress"_s};
}

void TestSaveProgress::listOpensFrom()
{
    QFETCH(const QStringList, clicks);
    QVERIFY(m_view.startWithTake(1));
    for (const QString &name : clicks) {
        QTRY_VERIFY(m_view.shows(name));
        QVERIFY(m_view.click(name));
    }
    QTRY_VERIFY(m_view.shows(u"Saves"_s, QAccessible::Table));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
    QVERIFY(m_view.click(u"Help"_s));
    QTRY_VERIFY(m_view.shows(u"About VESK"_s));
    QVERIFY(m_view.click(u"About VESK"_s));
    QTRY_VERIFY(!m_view.shows(u"Saves"_s, QAccessible::Table));
}

void TestSaveProgress::finishedSaveIsComplete()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.saveAs(u"shot"_s, u"VESK"_s));
    const QString row = u"shot.vesk"_s;
    QTRY_VERIFY(m_view.hasRow(row));
    QTRY_COMPARE(m_view.cell(row, u"Status"_s), u"Complete"_s);
    QCOMPARE(m_view.cell(row, u"Save To"_s), u"File"_s);
    QCOMPARE(m_view.cell(row, u"Name"_s), row);
    QCOMPARE(m_view.cell(row, u"Camera"_s), u"Simulated Q4"_s);
    QCOMPARE(m_view.cell(row, u"Source"_s), u"Take 1"_s);
    QVERIFY(m_view.rowHas(row, u"Open"_s));
    QVERIFY(m_view.rowHas(row, u"Remove"_s));
    QCOMPARE(m_view.files(), QStringList{row});
    QVERIFY(m_view.pressInRow(row, u"Remove"_s));
    QTRY_VERIFY(!m_view.hasRow(row));
    QCOMPARE(SaveFixture::jobs().size(), 0);
    QCOMPARE(m_view.files(), QStringList{row});
}

void TestSaveProgress::savesOfOneCameraRunOneByOne()
{
    QVERIFY(m_view.startWithTake(1));
    slowDown();
    QVERIFY(m_view.saveAs(u"first"_s, u"VESK"_s));
    QVERIFY(m_view.openTake(1));
    QVERIFY(m_view.saveAs(u"second"_s, u"TIFF"_s));
    const QString waiting = u"second_00.tiff"_s;
    QTRY_COMPARE(m_view.cell(waiting, u"Status"_s), u"Queued"_s);
    QVERIFY(m_view.rowHas(waiting, u"Remove"_s));
    QVERIFY(!m_view.rowHas(waiting, u"Open"_s));
    QCOMPARE(m_view.cell(u"first.vesk"_s, u"Status"_s), u"no cell Status"_s);
    QVERIFY(m_view.rowHas(u"first.vesk"_s, u"Cancel"_s));
    speedUp();
    QVERIFY(m_view.pressInRow(u"first.vesk"_s, u"Cancel"_s));
    QTRY_COMPARE(m_view.cell(u"first.vesk"_s, u"Status"_s), u"Cancelled"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_view.cell(waiting, u"Status"_s), u"Complete"_s, 20'000);
    QCOMPARE(m_view.files().size(), 50);
}

void TestSaveProgress::savingIsCancelledAndThenRemoved()
{
    QVERIFY(m_view.startWithTake(1));
    slowDown();
    SaveJob *job = m_view.saveAs(u"shot"_s, u"VESK"_s);
    QVERIFY(job);
    QTRY_VERIFY(job->progress() > 10.0);
    QVERIFY(m_view.pressInRow(u"shot.vesk"_s, u"Cancel"_s));
    QCOMPARE(job->state(), SaveJob::Cancelled);
    QTRY_COMPARE(m_view.cell(u"shot.vesk"_s, u"Status"_s), u"Cancelled"_s);
    QVERIFY(!m_view.rowHas(u"shot.vesk"_s, u"Open"_s));
    QCOMPARE(m_view.files(), QStringList());
    QVERIFY(m_view.pressInRow(u"shot.vesk"_s, u"Remove"_s));
    QTRY_VERIFY(!m_view.hasRow(u"shot.vesk"_s));
}

void TestSaveProgress::waitingSaveIsRemovedAtOnce()
{
    QVERIFY(m_view.startWithTake(1));
    slowDown();
    SaveJob *job = m_view.saveAs(u"first"_s, u"VESK"_s);
    QVERIFY(job);
    QVERIFY(m_view.openTake(1));
    QVERIFY(m_view.saveAs(u"second"_s, u"VESK"_s));
    QVERIFY(m_view.pressInRow(u"second.vesk"_s, u"Remove"_s));
    QTRY_VERIFY(!m_view.hasRow(u"second.vesk"_s));
    QCOMPARE(job->state(), SaveJob::Saving);
    QCOMPARE(SaveFixture::jobs(), QList<SaveJob *>{job});
    QCOMPARE(m_view.files(), QStringList{u"first.vesk"_s});
}

void TestSaveProgress::failedSaveTellsWhy()
{
    QVERIFY(m_view.startWithTake(1));
    VeskApp::instance()->setSetting(u"save/folder"_s, m_view.path(u"gone"_s));
    QVERIFY(m_view.saveAs(u"shot"_s, u"VESK"_s));
    QTRY_COMPARE(m_view.cell(u"shot.vesk"_s, u"Status"_s), u"Error: can't open file for writing"_s);
    QVERIFY(!m_view.rowHas(u"shot.vesk"_s, u"Open"_s));
    QVERIFY(m_view.pressInRow(u"shot.vesk"_s, u"Remove"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 0);
}

void TestSaveProgress::nativeFileOpensFromTheList()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.saveAs(u"take #1"_s, u"VESK"_s));
    QTRY_COMPARE(m_view.cell(u"take #1.vesk"_s, u"Status"_s), u"Complete"_s);
    QVERIFY(m_view.pressInRow(u"take #1.vesk"_s, u"Open"_s));
    QTRY_VERIFY(VeskApp::instance()->selectedVeskObject());
    QCOMPARE(VeskApp::instance()->selectedVeskObject()->type(), int(VeskObject::VeskFileType));
    QTRY_VERIFY(!m_view.hasRow(u"take #1.vesk"_s));
}

void TestSaveProgress::takeThatIsDeletedFailsItsSave()
{
    QVERIFY(m_view.startWithTake(1));
    m_view.simulated()->setFault(q4sim::Route::Xfer, {.kind = FaultKind::NoAnswer});
    QVERIFY(m_view.saveAs(u"shot"_s, u"VESK"_s));
    QTRY_VERIFY(m_view.rowHas(u"shot.vesk"_s, u"Cancel"_s));
    m_view.simulated()->dropTake(1);
    QTRY_COMPARE(m_view.cell(u"shot.vesk"_s, u"Status"_s), u"Error: take deleted or closed"_s);
    QCOMPARE(m_view.cell(u"shot.vesk"_s, u"Source"_s), u"Take 1"_s);
    QCOMPARE(m_view.files(), QStringList{u"shot.vesk"_s});
}

void TestSaveProgress::cameraThatIsDisconnectedFailsItsSaves()
{
    QVERIFY(m_view.startWithTake(1));
    slowDown();
    SaveJob *job = m_view.saveAs(u"shot"_s, u"VESK"_s);
    QVERIFY(job);
    QVERIFY(m_view.openTake(2));
    QVERIFY(m_view.saveAs(u"later"_s, u"VESK"_s));
    QTRY_VERIFY(job->progress() > 10.0);
    m_view.camera()->disconnectCamera();
    QTRY_COMPARE(m_view.cell(u"shot.vesk"_s, u"Status"_s), u"Error: camera disconnected"_s);
    QTRY_COMPARE(m_view.cell(u"later.vesk"_s, u"Status"_s), u"Error: camera disconnected"_s);
    QCOMPARE(m_view.cell(u"shot.vesk"_s, u"Camera"_s), u"Simulated Q4"_s);
}

void TestSaveProgress::bannerTellsOfTheSaveOverThePicture()
{
    QVERIFY(m_view.startWithTake(1));
    slowDown();
    SaveJob *job = m_view.saveAs(u"shot"_s, u"VESK"_s);
    QVERIFY(job);
    for (const QString &tab : {u"Take 2"_s, u"Simulated Q4"_s}) {
        QVERIFY(m_view.click(tab));
        QTRY_VERIFY(glyph(u"SAVE IN PROGRESS..."_s));
        const QQuickItem *box = glyph(u"SAVE IN PROGRESS..."_s)->parentItem();
        QCOMPARE(box->size(), QSizeF(192, 28));
        QCOMPARE(box->property("color").value<QColor>(), QColor(u"#262626"_s));
        QTRY_VERIFY(glyph(u"%1%"_s.arg(job->progress(), 0, 'f', 0)));
        QCOMPARE(job->state(), SaveJob::Saving);
    }
    speedUp();
    job->cancel();
    QTRY_VERIFY(!glyph(u"SAVE IN PROGRESS..."_s));
}

void TestSaveProgress::columnsAreWidenedByTheirRules()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.click(u"Save progress"_s));
    QTRY_VERIFY(m_view.shows(u"Name"_s, QAccessible::ColumnHeader));
    ViewFixture::settle(m_view.window());
    const auto header = [this](const QString &name) {
        return m_view.element(name, QAccessible::ColumnHeader)
            ->rect()
            .translated(-m_view.window()->position());
    };
    const QList<std::pair<QString, int>> widths = {
        {u"Save To"_s, 72}, {u"Name"_s, 240}, {u"Status"_s, 200}, {u"Camera"_s, 200}, {u"Source"_s, 240}};
    for (const auto &[name, width] : widths)
        QCOMPARE(header(name).width(), width);

    const auto drag = [this](QPoint from, int by) {
        QTest::mouseMove(m_view.window(), from);
        QTest::mousePress(m_view.window(), Qt::LeftButton, {}, from);
        QTest::mouseMove(m_view.window(), from + QPoint(by / 2, 0));
        QTest::mouseMove(m_view.window(), from + QPoint(by, 0));
        QTest::mouseRelease(m_view.window(), Qt::LeftButton, {}, from + QPoint(by, 0));
    };
    drag(header(u"Name"_s).topRight() + QPoint(0, 14), 30);
    QCOMPARE(header(u"Name"_s).width(), 270);
    QCOMPARE(header(u"Status"_s).width(), 200);
    drag(header(u"Name"_s).topRight() + QPoint(2, 14), -400);
    QCOMPARE(header(u"Name"_s).width(), 64);
    QTRY_COMPARE(header(u"Status"_s).left(), header(u"Name"_s).left() + 64);
}

void TestSaveProgress::rowsAndHeaderHaveTheirSizes()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.saveAs(u"shot"_s, u"VESK"_s));
    QTRY_COMPARE(m_view.cell(u"shot.vesk"_s, u"Status"_s), u"Complete"_s);
    ViewFixture::settle(m_view.window());
    QCOMPARE(m_view.element(u"shot.vesk"_s, QAccessible::Row)->rect().height(), 48);
    QCOMPARE(m_view.element(u"Name"_s, QAccessible::ColumnHeader)->rect().height(), 28);
    const QQuickItem *open = glyph(u"\uF012"_s);
    QVERIFY(open);
    QCOMPARE(open->width(), 18.0);
    QCOMPARE(open->property("font").value<QFont>().pixelSize(), 18);
    QVERIFY(glyph(u"\uEB98"_s));
    QVERIFY(glyph(u"\uECC5"_s));
    QVERIFY(glyph(u"\uF288"_s));
    QVERIFY(glyph(u"\uEB8F"_s));
}

void TestSaveProgress::rowLightsUpUnderThePointer()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.saveAs(u"shot"_s, u"VESK"_s));
    QTRY_VERIFY(m_view.hasRow(u"shot.vesk"_s));
    ViewFixture::settle(m_view.window());
    QAccessibleInterface *row = m_view.element(u"shot.vesk"_s, QAccessible::Row);
    const QObject *item = row->object();
    QTest::mouseMove(m_view.window(), QPoint(700, 600));
    QTRY_COMPARE(item->property("color").value<QColor>().alpha(), 0);
    QTest::mouseMove(m_view.window(), ViewFixture::centre(m_view.window(), row));
    QTRY_COMPARE(item->property("color").value<QColor>(), QColor(u"#262626"_s));
}

VIEW_TEST_MAIN(TestSaveProgress)
#include "tst_save_progress.moc"
