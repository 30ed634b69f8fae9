#include "camera/camera.h"
#include "image/img_search.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "sim/fault.h"
#include "take/ssd_take.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/playback_in_hand.h"
#include "tests/qml/view_test_main.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;
using q4sim::Route;

static const QString Section = u"SSD Take"_s;
static const QString Name = u"wheel.vesk"_s;

/** Recordings of a drive that are closed, by the operator or by the camera, while somebody has them in hand.
 */
class TestDriveGone : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void recordingThatTheCameraClosesGoesWhile_data();
    void recordingThatTheCameraClosesGoesWhile();
    void closedRecordingIsShownEmptyUntilTheCameraForgetsIt();
    void secondCloseChangesNothing();
    void closeThatIsRefusedLeavesTheRecordingInHand();

private:
    enum Use { IsSearched = PlaybackInHand::UseCount, TabMenuOpen, FileMenuOpen, AboutToBeSaved, IsSaved };

    bool use(int what);
    bool pickClose();
    static VeskObject *selected() { return VeskApp::instance()->selectedVeskObject(); }

    DriveFixture m_view;
};

bool TestDriveGone::use(int what)
{
    switch (what) {
    case IsSearched:
        m_view.simulated()->setFault(Route::Xfer, {.kind = FaultKind::Delay, .ms = 200});
        DriveFixture::selectedRecording()->imgSearch()->start(true);
        return QTest::qWaitFor([this] { return m_view.shows(u"Cancel the search"_s); });
    case TabMenuOpen:
        return m_view.click(Name, Qt::RightButton) && m_view.offers(u"Close"_s);
    case FileMenuOpen:
        return m_view.click(u"File"_s) && m_view.offers(u"Close"_s);
    case AboutToBeSaved:
    case IsSaved:
        m_view.simulated()->setFault(Route::Xfer, {.kind = FaultKind::Drip, .ms = 100, .bytes = 100'000});
        if (!m_view.clickIn(Section, u"Save..."_s) ||
            !QTest::qWaitFor([this] { return m_view.saveDialog() != nullptr; }))
            return false;
        return what == AboutToBeSaved ||
               (m_view.typeInto(u"File Name"_s, u"copy"_s) && m_view.press(u"Save"_s) && QTest::qWaitFor([] {
                    return SaveFixture::jobs().size() == 1 && SaveFixture::jobs().first()->progress() > 0;
                }));
    default:
        return PlaybackInHand::use(m_view, what);
    }
}

bool TestDriveGone::pickClose()
{
    return m_view.click(Name, Qt::RightButton) && m_view.offers(u"Close"_s) &&
           m_view.click(m_view.window(), u"Close"_s) &&
           QTest::qWaitFor([this] { return !m_view.shows(u"Close"_s, QAccessible::MenuItem); });
}

void TestDriveGone::recordingThatTheCameraClosesGoesWhile_data()
{
    QTest::addColumn<int>("what");
    PlaybackInHand::addUses();
    QTest::newRow("is searched") << int(IsSearched);
    QTest::newRow("tab's menu open") << int(TabMenuOpen);
    QTest::newRow("file menu open") << int(FileMenuOpen);
    QTest::newRow("about to be saved") << int(AboutToBeSaved);
    QTest::newRow("is saved") << int(IsSaved);
}

void TestDriveGone::recordingThatTheCameraClosesGoesWhile()
{
    QFETCH(const int, what);
    const QPointer<SsdTake> take = m_view.startWithRecording(Name);
    QVERIFY(take);
    QTRY_VERIFY(!take->imgFrame()->image().isNull());
    QVERIFY(m_view.waitForPolls(2));
    QVERIFY(use(what));
    QCOMPARE(m_view.simulated()->operate({{u"ssd_close"_s, take->takeId()}}), QString());
    QTRY_VERIFY(!take);
    PlaybackInHand::letGo(m_view);
    QVERIFY(!m_view.tabOf(Name));
    QTRY_VERIFY(!m_view.saveDialog());
    QVERIFY(!m_view.shows(u"Close"_s, QAccessible::MenuItem));
    if (what == IsSaved) {
        SaveJob *job = SaveFixture::jobs().first();
        QTRY_COMPARE(job->state(), SaveJob::Error);
        // The status or the broken answer, whichever is first.
        QVERIFY2(job->error() == u"take deleted or closed" || job->error() == u"HTTP 200",
                 qPrintable(job->error()));
    } else {
        QCOMPARE(selected(), m_view.camera());
    }
    m_view.simulated()->clearFaults();
    m_view.camera()->ssdFOpen(Name);
    QTRY_VERIFY(m_view.tabOf(Name));
    QTRY_VERIFY(DriveFixture::selectedRecording() && DriveFixture::selectedRecording()->valuesInit());
}

/** By the next status it goes for good, and no source is selected then. */
void TestDriveGone::closedRecordingIsShownEmptyUntilTheCameraForgetsIt()
{
    const QPointer<SsdTake> take = m_view.startWithRecording(Name);
    QVERIFY(take);
    QTRY_VERIFY(!take->imgFrame()->image().isNull());
    QVERIFY(m_view.waitForPolls(2));
    m_view.simulated()->setFault(Route::Status, {.kind = FaultKind::Delay, .ms = 2500});
    const auto statuses = [this] { return m_view.simulated()->requests("GET", u"/"_s).size(); };
    const qsizetype before = statuses();
    QTRY_VERIFY(statuses() > before + 1);
    QVERIFY(pickClose());
    QTRY_COMPARE(selected(), m_view.camera());
    QVERIFY(take);
    QVERIFY(m_view.tabOf(Name));
    QVERIFY(m_view.click(Name));
    QCOMPARE(selected(), take);
    QVERIFY(!take->savedOpened());
    QVERIFY(take->imgFrame()->image().isNull());
    QCOMPARE(take->requestFrame(), -1);
    QTRY_VERIFY(m_view.inSection(Section, u"Name"_s));
    m_view.simulated()->clearFaults();
    QTRY_VERIFY_WITH_TIMEOUT(!take, 15'000);
    QVERIFY(!m_view.tabOf(Name));
    QCOMPARE(selected(), nullptr);
    QTRY_VERIFY(!m_view.inSection(Section, u"Name"_s));
    QVERIFY(m_view.click(u"Simulated Q4"_s));
    QTRY_COMPARE(selected(), m_view.camera());
}

void TestDriveGone::secondCloseChangesNothing()
{
    const QPointer<SsdTake> take = m_view.startWithRecording(Name);
    QVERIFY(take);
    const QByteArray body = "{\"take\":" + QByteArray::number(take->takeId()) + '}';
    m_view.simulated()->setFault(Route::SsdFclose, {.kind = FaultKind::Delay, .ms = 10'000});
    QVERIFY(pickClose());
    // On a slow machine the menu of before may still be going, and its entry with it.
    QVERIFY(QTest::qWaitFor([this] { return pickClose(); }));
    QTRY_COMPARE(ViewFixture::bodies(*m_view.simulated(), "POST", u"/ssd-fclose"_s),
                 QByteArrayList({body, body}));
    QTRY_COMPARE_WITH_TIMEOUT(selected(), m_view.camera(), 40'000);
    QTRY_VERIFY(!take);
    QVERIFY(!m_view.tabOf(Name));
    QVERIFY(m_view.waitForPolls(3));
    QCOMPARE(selected(), m_view.camera());
}

void TestDriveGone::closeThatIsRefusedLeavesTheRecordingInHand()
{
    SsdTake *take = m_view.startWithRecording(Name);
    QVERIFY(take);
    m_view.simulated()->setFault(Route::SsdFclose, {.kind = FaultKind::Http500, .count = 1});
    QTest::ignoreMessage(QtDebugMsg, "fcloseFinished error");
    QVERIFY(pickClose());
    QTRY_COMPARE(m_view.simulated()->requests("POST", u"/ssd-fclose"_s).size(), 1);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(selected(), take);
    take->pause();
    const int before = take->fr();
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QTRY_COMPARE(take->fr(), before + 1);
    QVERIFY(pickClose());
    QTRY_VERIFY(!m_view.tabOf(Name));
}

VIEW_TEST_MAIN(TestDriveGone)
#include "tst_drive_gone.moc"
