#include "app/vesk_app.h"
#include "camera/camera.h"
#include "camera/vesk_value.h"
#include "image/img_adj_model.h"
#include "image/img_search.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "take/ssd_take.h"
#include "take/take.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/keys.h"
#include "tests/qml/view_test_main.h"

#include <QPointer>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSignalSpy>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

/** A day's work at a camera without a pointer: each test goes on where the one before has ended. */
class TestKeysAlone : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { QCOMPARE(m_view.end(), QStringList()); }

    void cameraIsConnected();
    void valueIsTyped();
    void choiceIsMade();
    void takeIsRecorded();
    void takeIsChosenAndPlayed();
    void rangeIsMarked();
    void changeIsSearched();
    void pictureIsAdjusted();
    void takeIsSaved();
    void saveIsRemovedFromTheList();
    void listingIsSorted();
    void recordingIsOpenedAndPlayed();
    void recordingIsClosed();
    void driveIsFormatted();
    void takeIsDeleted();
    void cameraIsDisconnected();
    void programEnds();

private:
    static VeskObject *selected() { return VeskApp::instance()->selectedVeskObject(); }
    static Take *take() { return qobject_cast<Take *>(selected()); }

    DriveFixture m_view;
    Keys m_keys{m_view};
    q4sim::Camera *m_simulated = nullptr;
};

void TestKeysAlone::initTestCase()
{
    m_view.startFolder();
    q4sim::Config config;
    config.address = QHostAddress(ViewFixture::address(1));
    config.discovery = false;
    // Some 200 frames a take, so that one is full soon after its trigger.
    config.memoryBytes = 256 << 20;
    config.resolutions = {u"640x480"_s, u"320x240"_s};
    m_simulated = m_view.simulate(config);
    QVERIFY(m_simulated);
    m_view.open();
}

void TestKeysAlone::cameraIsConnected()
{
    const QString title = u"Connect Camera"_s;
    QVERIFY(m_keys.pickFromMenu(Qt::Key_F, u"Connect Camera..."_s));
    QVERIFY(m_keys.waitForDialog(title));
    m_keys.type(ViewFixture::address(1));
    m_keys.press(Qt::Key_Return);
    const auto connected = [] {
        auto *camera = qobject_cast<Camera *>(selected());
        return camera && camera->connected();
    };
    QTRY_VERIFY(connected());
    m_keys.press(Qt::Key_Escape);
    QVERIFY(m_keys.waitForNoDialog(title));
}

void TestKeysAlone::valueIsTyped()
{
    QVERIFY(m_keys.enter(u"Trigger Offset"_s, u"50"_s));
    QTRY_COMPARE(m_simulated->value(u"acq/trig_offset"_s).toInt(), 50);
}

void TestKeysAlone::choiceIsMade()
{
    QVERIFY(m_keys.use(u"Frame Sync Mode"_s));
    QTRY_VERIFY(m_view.shows(u"External"_s));
    m_keys.press(Qt::Key_Down);
    m_keys.press(Qt::Key_Return);
    QTRY_COMPARE(m_simulated->value(u"acq/fsync_mode"_s).toInt(), 1);
    // A closed box steps through its choices, too.
    QVERIFY(m_keys.tabTo(u"Frame Sync Mode"_s));
    m_keys.press(Qt::Key_Up);
    QTRY_COMPARE(m_simulated->value(u"acq/fsync_mode"_s).toInt(), 0);
}

void TestKeysAlone::takeIsRecorded()
{
    QVERIFY(m_keys.use(u"Record"_s));
    QTRY_COMPARE(m_simulated->requests("POST", u"/rec"_s).size(), 1);
    QTRY_VERIFY(m_view.shows(u"Trigger"_s));
    QVERIFY(m_keys.use(u"Trigger"_s));
    QTRY_COMPARE(m_simulated->requests("POST", u"/trig"_s).size(), 1);
    QTRY_VERIFY(m_view.tab(1));
}

void TestKeysAlone::takeIsChosenAndPlayed()
{
    QVERIFY(m_keys.use(u"Take 1"_s));
    QTRY_VERIFY(take() && take()->valuesInit());
    // It plays from the start.
    m_keys.press(Qt::Key_Space);
    QTRY_COMPARE(take()->state(), PlaybackVeskObject::Paused);
    QVERIFY(m_keys.enter(u"Frame"_s, u"10"_s));
    QTRY_COMPARE(take()->fr(), 10);
    m_keys.press(Qt::Key_Right);
    QTRY_COMPARE(take()->fr(), 11);
    m_keys.press(Qt::Key_Left);
    QTRY_COMPARE(take()->fr(), 10);
    m_keys.press(Qt::Key_Space);
    QTRY_COMPARE(take()->state(), PlaybackVeskObject::Play);
    QTRY_VERIFY(take()->fr() != 10);
    QVERIFY(m_keys.use(u"Pause"_s));
    QTRY_COMPARE(take()->state(), PlaybackVeskObject::Paused);
}

void TestKeysAlone::rangeIsMarked()
{
    QVERIFY(m_keys.enter(u"Frame"_s, u"5"_s));
    QVERIFY(m_keys.use(u"Start of the range here"_s));
    QTRY_COMPARE(take()->aFr(), 5);
    QVERIFY(m_keys.enter(u"Frame"_s, u"24"_s));
    QVERIFY(m_keys.use(u"End of the range here"_s));
    QTRY_COMPARE(take()->bFr(), 24);
    QCOMPARE(take()->aFr(), 5);
}

void TestKeysAlone::changeIsSearched()
{
    QSignalSpy states(take()->imgSearch(), &ImgSearch::stateChanged);
    QVERIFY(m_keys.use(u"Skip back"_s));
    QVERIFY(m_keys.pick(u"First Frame"_s));
    QTRY_COMPARE(take()->fr(), 5);
    QVERIFY(m_keys.use(u"Skip forward"_s));
    QVERIFY(m_keys.pick(u"Next Image Diff"_s));
    QTRY_COMPARE(states.size(), 2);
    QCOMPARE(take()->imgSearch()->state(), ImgSearch::Idle);
}

void TestKeysAlone::pictureIsAdjusted()
{
    const auto fr = take()->fr();
    QVERIFY(m_keys.tabTo(u"Gain"_s));
    m_keys.press(Qt::Key_Right);
    const auto *gain = take()->imgAdjModel()->property("gain").value<VeskValue *>();
    QVERIFY(gain);
    QTRY_VERIFY(gain->variant().toDouble() > 1.0);
    QCOMPARE(take()->fr(), fr);
    QVERIFY(m_keys.use(u"Flip vertically"_s));
    QCOMPARE(take()->imgAdjModel()->property("flipV").toBool(), true);
}

void TestKeysAlone::takeIsSaved()
{
    QVERIFY(m_keys.pickFromMenu(Qt::Key_F, u"Save..."_s));
    QVERIFY(m_keys.waitForDialog(u"Save"_s));
    QVERIFY(m_keys.tabTo(u"File Name"_s));
    m_keys.replace(u"by keys"_s);
    QVERIFY(m_keys.tabTo(u"Save"_s));
    m_keys.press(Qt::Key_Return);
    QVERIFY(m_keys.waitForNoDialog(u"Save"_s));
    QCOMPARE(SaveFixture::jobs().size(), 1);
    QTRY_COMPARE(SaveFixture::jobs().first()->state(), SaveJob::Done);
    QCOMPARE(m_view.files(), QStringList{u"by keys.vesk"_s});
    QVERIFY(m_view.hasRow(u"by keys.vesk"_s));
}

void TestKeysAlone::saveIsRemovedFromTheList()
{
    QVERIFY(m_keys.use(u"Remove"_s));
    QTRY_VERIFY(SaveFixture::jobs().isEmpty());
    QVERIFY(m_keys.pickFromMenu(Qt::Key_H, u"About VESK"_s));
    QTRY_VERIFY(m_view.shows(u"Credits"_s));
    QVERIFY(m_keys.pickFromMenu(Qt::Key_V, u"Save Progress"_s));
    QTRY_VERIFY(!m_view.shows(u"Credits"_s));
    QVERIFY(m_keys.use(u"Simulated Q4"_s));
    QTRY_VERIFY(qobject_cast<Camera *>(selected()));
}

void TestKeysAlone::listingIsSorted()
{
    QVERIFY(m_keys.pickFromMenu(Qt::Key_F, u"Open SSD Take..."_s));
    QVERIFY(m_keys.waitForDialog(u"Open SSD Take"_s));
    QTRY_COMPARE(m_view.names().size(), 3);
    // By name at first.
    QVERIFY(std::ranges::is_sorted(m_view.names()));
    QVERIFY(m_keys.tabTo(u"Name"_s));
    m_keys.press(Qt::Key_Return);
    QTRY_VERIFY(std::ranges::is_sorted(m_view.names(), std::greater()));
    m_keys.press(Qt::Key_Space);
    QTRY_VERIFY(std::ranges::is_sorted(m_view.names()));
}

void TestKeysAlone::recordingIsOpenedAndPlayed()
{
    // Tab goes round through titles, buttons and the list, time and again.
    for (const QString &name :
         {u"Date"_s, u"Cancel"_s, u"Recordings"_s, u"Date"_s, u"Recordings"_s, u"Name"_s})
        QVERIFY2(m_keys.tabTo(name), qPrintable(name));
    // From a title the arrows go into the list, where Return opens.
    m_keys.press(Qt::Key_Home);
    const QString first = m_view.names().first();
    QCOMPARE(m_keys.focused(), first);
    QTRY_VERIFY(m_view.isSelected(first));
    m_keys.press(Qt::Key_Return);
    QVERIFY(m_keys.waitForNoDialog(u"Open SSD Take"_s));
    QTRY_VERIFY(DriveFixture::selectedRecording() && DriveFixture::selectedRecording()->valuesInit());
    QTRY_VERIFY(m_view.tabOf(first));
    m_keys.press(Qt::Key_Space);
    QTRY_COMPARE(DriveFixture::selectedRecording()->state(), PlaybackVeskObject::Paused);
    m_keys.press(Qt::Key_Space);
    QTRY_COMPARE(DriveFixture::selectedRecording()->state(), PlaybackVeskObject::Play);
}

void TestKeysAlone::recordingIsClosed()
{
    QVERIFY(m_keys.pickFromMenu(Qt::Key_F, u"Close"_s));
    QTRY_VERIFY(qobject_cast<Camera *>(selected()));
    QCOMPARE(m_simulated->requests("POST", u"/ssd-fclose"_s).size(), 1);
}

void TestKeysAlone::driveIsFormatted()
{
    QVERIFY(m_keys.use(u"Format"_s, u"SSD"_s));
    QVERIFY(m_keys.waitForDialog(u"SSD Format"_s));
    m_keys.replace(u"NEW"_s);
    QVERIFY(m_keys.tabTo(u"Format"_s));
    m_keys.press(Qt::Key_Return);
    QTRY_COMPARE(ViewFixture::bodies(*m_simulated, "POST", u"/ssd-format"_s),
                 QByteArrayList{R"({"name":"NEW"})"});
    QVERIFY(m_keys.waitForNoDialog(u"SSD Format"_s));
}

void TestKeysAlone::takeIsDeleted()
{
    // From the menu of its tab.
    QVERIFY(m_keys.tabTo(u"Take 1"_s));
    m_keys.press(Qt::Key_Menu);
    QVERIFY(m_keys.pick(u"Delete..."_s));
    QVERIFY(m_keys.waitForDialog(u"VESK"_s));
    QCOMPARE(m_keys.focused(), u"Cancel"_s);
    QVERIFY(m_keys.tabTo(u"OK"_s));
    m_keys.press(Qt::Key_Return);
    QTRY_VERIFY(!m_view.tab(1));
    QCOMPARE(ViewFixture::bodies(*m_simulated, "POST", u"/del"_s), QByteArrayList{R"({"take":1})"});
    QVERIFY(m_keys.waitForNoDialog(u"VESK"_s));
}

void TestKeysAlone::cameraIsDisconnected()
{
    QVERIFY(m_keys.pickFromMenu(Qt::Key_F, u"Disconnect"_s));
    QTRY_COMPARE(VeskApp::instance()->veskObjects().size(), 0);
    QTRY_VERIFY(m_view.shows(u"Credits"_s));
}

void TestKeysAlone::programEnds()
{
    QSignalSpy quit(qmlEngine(m_view.window()), &QQmlEngine::quit);
    QVERIFY(m_keys.pickFromMenu(Qt::Key_F, u"Exit"_s));
    QTRY_COMPARE(quit.size(), 1);
}

VIEW_TEST_MAIN(TestKeysAlone)
#include "tst_keys_alone.moc"
