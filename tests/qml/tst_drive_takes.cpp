#include "app/vesk_app.h"
#include "camera/camera.h"
#include "camera/vesk_value.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "take/ssd_take.h"
#include "take/take.h"
#include "tests/qml/drive_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Section = u"SSD Take"_s;
static const QString Name = u"wheel.vesk"_s;

/** Opened recordings of a camera's drive in the window, and saves to the drive and from it. */
class TestDriveTakes : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void tabHangsUnderTheCamera();
    void tabFollowsTheTakes();
    void rightClickOnATabOffersItsMenu();
    void tabCanBeWorkedWithKeys();
    void fileMenuOfARecording();
    void panelTellsTheRecording();
    void recordingIsSteppedThrough();
    void closedRecordingLeadsBackToItsCamera_data();
    void closedRecordingLeadsBackToItsCamera();
    void recordingGoesWithItsCamera();
    void recordingIsSavedIntoAFileOnly();
    void takeIsSavedToTheDrive();
    void drivesSpaceAndFormatAreShown();
    void olderFirmwareNamesTheRecordingItself();
    void storedDriveIsNoChoiceForARecording();
    void brokenSaveToTheDriveTellsWhy();
    void saveThatTheCameraHoldsBackIsQueued();

private:
    /** A take, to a drive that writes so many bytes a second; the save has the name "shot". */
    bool saveToDrive(qint64 bytesPerSecond)
    {
        q4sim::Config config;
        config.driveBytesPerSecond = bytesPerSecond;
        return m_view.startWithTake(1, config) && m_view.openSave() && m_view.pick(u"Save To"_s, u"SSD"_s) &&
               m_view.typeInto(u"File Name"_s, u"shot"_s) && m_view.press(u"Save"_s) &&
               QTest::qWaitFor([this] { return m_view.hasRow(u"shot.vesk"_s); });
    }

    DriveFixture m_view;
};

void TestDriveTakes::tabHangsUnderTheCamera()
{
    QVERIFY(m_view.startWithRecording(Name));
    QTRY_VERIFY(m_view.tabOf(Name));
    ViewFixture::settle(m_view.window());
    const QQuickItem *tab = m_view.tabOf(Name);
    const QQuickItem *camera = m_view.tabOf(u"Simulated Q4"_s);
    QVERIFY(camera);
    QCOMPARE(tab->size(), QSizeF(239 - 16, 28));
    // The borders lie on each other.
    QCOMPARE(tab->mapToScene({0, 0}), camera->mapToScene({0, 48}));
    QCOMPARE(tab->property("color").value<QColor>(), QColor("#262626"));
    const auto *border = tab->property("border").value<QObject *>();
    QCOMPARE(border->property("color").value<QColor>(), QColor("#D25F15"));
    QQuickItem *icon = ViewFixture::itemWithText(m_view.tabOf(Name), u"\uECC5"_s);
    QVERIFY(icon);
    QCOMPARE(icon->x(), 5.0);
    QCOMPARE(icon->width(), 50.0);
    QCOMPARE(icon->property("font").value<QFont>().pixelSize(), 16);
    QCOMPARE(icon->property("color").value<QColor>(), QColor("white"));
    QVERIFY(m_view.click(u"Simulated Q4"_s));
    QTRY_COMPARE(border->property("color").value<QColor>(), QColor("#212121"));
}

void TestDriveTakes::tabFollowsTheTakes()
{
    QVERIFY(m_view.startWithRecording(Name));
    QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
    QTRY_VERIFY(m_view.tab(1) && m_view.tabOf(Name));
    ViewFixture::settle(m_view.window());
    QCOMPARE(m_view.tabOf(Name)->mapToScene({0, 0}), m_view.tab(1)->mapToScene({0, 26}));
    m_view.camera()->ssdFOpen(u"drop-test.vesk"_s);
    QTRY_VERIFY(m_view.tabOf(u"drop-test.vesk"_s));
    ViewFixture::settle(m_view.window());
    QCOMPARE(m_view.tabOf(u"drop-test.vesk"_s)->mapToScene({0, 0}), m_view.tabOf(Name)->mapToScene({0, 26}));
}

void TestDriveTakes::rightClickOnATabOffersItsMenu()
{
    QVERIFY(m_view.startWithRecording(Name));
    QVERIFY(m_view.click(Name, Qt::RightButton));
    m_view.checkTabMenu();
}

void TestDriveTakes::tabCanBeWorkedWithKeys()
{
    SsdTake *take = m_view.startWithRecording(Name);
    QVERIFY(take);
    QVERIFY(m_view.click(u"Simulated Q4"_s));
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    m_view.tabOf(Name)->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), take);
}

void TestDriveTakes::fileMenuOfARecording()
{
    QVERIFY(m_view.startWithRecording(Name));
    QVERIFY(m_view.click(u"File"_s));
    QVERIFY(m_view.offers(u"Close"_s));
    QCOMPARE(m_view.menuWith(u"Close"_s), QStringList({u"Connect Camera..."_s, u"Open VESK File..."_s, u"-"_s,
                                                       u"Save..."_s, u"Close"_s, u"-"_s, u"Exit"_s}));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
}

void TestDriveTakes::panelTellsTheRecording()
{
    QVERIFY(m_view.startWithRecording(Name));
    QCOMPARE(m_view.rowText(Section, u"Name"_s), u"wheel"_s);
    QCOMPARE(m_view.rowText(Section, u"Resolution"_s), u"640x480"_s);
    QCOMPARE(m_view.rowText(Section, u"Frame Rate"_s), u"1000 fps"_s);
    QCOMPARE(m_view.rowText(Section, u"Frame Sync Mode"_s), u"Internal"_s);
    QCOMPARE(m_view.rowText(Section, u"Black Ref Mode"_s), u"Normal"_s);
    QVERIFY(m_view.rowText(Section, u"Exposure Time"_s).endsWith(u" µs"_s));
    QVERIFY(!m_view.shows(u"Delete..."_s, QAccessible::Button));
    QVERIFY(!m_view.shows(u"Black Ref Mode"_s, QAccessible::ComboBox));
    QVERIFY(m_view.inSection(Section, u"Save..."_s, QAccessible::Button));
}

void TestDriveTakes::recordingIsSteppedThrough()
{
    SsdTake *take = m_view.startWithRecording(Name);
    QVERIFY(take);
    QCOMPARE(take->fr(), 0);
    take->pause();
    QTRY_VERIFY(!take->imgFrame()->image().isNull());
    const QImage first = take->imgFrame()->image().copy();
    QTest::keyClick(m_view.window(), Qt::Key_Right);
    QTRY_COMPARE(take->fr(), 1);
    QTRY_VERIFY(take->imgFrame()->image() != first);
    for (const QByteArray &body : ViewFixture::bodies(*m_view.simulated(), "POST", u"/xfer"_s).mid(1)) {
        if (body.contains("\"src\":2"))
            QVERIFY(body.contains("\"take\":" + QByteArray::number(take->takeId())));
    }
}

void TestDriveTakes::closedRecordingLeadsBackToItsCamera_data()
{
    QTest::addColumn<bool>("fromTab");
    QTest::newRow("tab's menu") << true;
    QTest::newRow("file menu") << false;
}

void TestDriveTakes::closedRecordingLeadsBackToItsCamera()
{
    QFETCH(const bool, fromTab);
    const QPointer<SsdTake> take = m_view.startWithRecording(Name);
    QVERIFY(take);
    const QByteArray body = "{\"take\":" + QByteArray::number(take->takeId()) + '}';
    QVERIFY(fromTab ? m_view.click(Name, Qt::RightButton) : m_view.click(u"File"_s));
    QVERIFY(m_view.offers(u"Close"_s));
    QVERIFY(m_view.click(m_view.window(), u"Close"_s));
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QTRY_VERIFY(!m_view.tabOf(Name));
    QTRY_VERIFY(!take);
    QCOMPARE(ViewFixture::bodies(*m_view.simulated(), "POST", u"/ssd-fclose"_s), QByteArrayList{body});
}

void TestDriveTakes::recordingGoesWithItsCamera()
{
    const QPointer<SsdTake> take = m_view.startWithRecording(Name);
    QVERIFY(take);
    take->play();
    QVERIFY(m_view.click(Section, Qt::LeftButton));
    m_view.camera()->disconnectCamera();
    QTRY_VERIFY(!take);
    QTRY_VERIFY(!m_view.tabOf(Name));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), nullptr);
}

void TestDriveTakes::recordingIsSavedIntoAFileOnly()
{
    SsdTake *take = m_view.startWithRecording(Name);
    QVERIFY(take);
    take->setBFr(9);
    QVERIFY(m_view.clickIn(Section, u"Save..."_s));
    QTRY_VERIFY(m_view.saveDialog());
    QVERIFY(QTest::qWaitForWindowActive(m_view.saveDialog()));
    QCOMPARE(m_view.textOf(u"Camera"_s), u"Simulated Q4"_s);
    QCOMPARE(m_view.textOf(u"SSD Take"_s), Name);
    QCOMPARE(m_view.chosen(u"Save To"_s), u"File"_s);
    QVERIFY(!m_view.isEnabled(u"Save To"_s, QAccessible::ComboBox));
    QVERIFY(m_view.typeInto(u"File Name"_s, u"copy"_s));
    QVERIFY(m_view.press(u"Save"_s));
    const QString file = u"copy.vesk"_s;
    QTRY_COMPARE(m_view.cell(file, u"Status"_s), u"Complete"_s);
    QCOMPARE(m_view.cell(file, u"Save To"_s), u"File"_s);
    QCOMPARE(m_view.cell(file, u"Camera"_s), u"Simulated Q4"_s);
    QCOMPARE(m_view.cell(file, u"Source"_s), Name);
    QCOMPARE(m_view.files(), QStringList(file));
}

void TestDriveTakes::takeIsSavedToTheDrive()
{
    const QString file = u"shot.vesk"_s;
    QVERIFY(saveToDrive(5'000'000));
    QCOMPARE(m_view.cell(file, u"Save To"_s), u"SSD"_s);
    QCOMPARE(m_view.cell(file, u"Source"_s), u"Take 1"_s);
    // The camera does not take back what it was asked for.
    QCOMPARE(SaveFixture::jobs().first()->state(), SaveJob::Saving);
    QVERIFY(!m_view.rowHas(file, u"Cancel"_s));
    QVERIFY(!m_view.rowHas(file, u"Remove"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_view.cell(file, u"Status"_s), u"Complete"_s, 20'000);
    QCOMPARE(VeskApp::instance()->setting(u"save/dest"_s).toInt(), 1);
    QVERIFY(m_view.pressInRow(file, u"Open"_s));
    QTRY_VERIFY(m_view.tabOf(file));
    QTRY_VERIFY(DriveFixture::selectedRecording() && DriveFixture::selectedRecording()->valuesInit());
    QCOMPARE(DriveFixture::selectedRecording()->firstFrValue()->variant().toInt(), -20);
    QCOMPARE(DriveFixture::selectedRecording()->lastFrValue()->variant().toInt(), 29);
}

void TestDriveTakes::drivesSpaceAndFormatAreShown()
{
    q4sim::Config config;
    config.driveBytes = 500'000'000'000;
    config.recordings = {};
    Take *take = m_view.startWithTake(1, config);
    QVERIFY(take);
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.textOf(u"Folder"_s) != u"no row Folder"_s);
    QVERIFY(m_view.pick(u"Format"_s, u"TIFF"_s));
    QVERIFY(m_view.pick(u"Save To"_s, u"SSD"_s));
    QCOMPARE(m_view.textOf(u"Folder"_s), u"no row Folder"_s);
    QCOMPARE(m_view.chosen(u"Format"_s), u"VESK"_s);
    QVERIFY(!m_view.isEnabled(u"Format"_s, QAccessible::ComboBox));
    QCOMPARE(m_view.chosen(u"Codec"_s), u"no box Codec"_s);
    const double free = m_view.camera()->ssdSizeValue()->variant().toDouble() -
                        m_view.camera()->ssdUsedValue()->variant().toDouble();
    QVERIFY(free > 400e9);
    QCOMPARE(m_view.textOf(u"Free Space"_s),
             QLocale().formattedDataSize(qint64(free), 2, QLocale::DataSizeSIFormat));
    QVERIFY(m_view.pick(u"Save To"_s, u"File"_s));
    QCOMPARE(m_view.chosen(u"Format"_s), u"TIFF"_s);
}

void TestDriveTakes::olderFirmwareNamesTheRecordingItself()
{
    q4sim::Config config;
    config.features = {{u"ssd-save"_s, 1}};
    q4sim::Camera *simulated = m_view.startWithTake(1, config) ? m_view.simulated() : nullptr;
    QVERIFY(simulated);
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.typeInto(u"File Name"_s, u"mine"_s));
    QVERIFY(m_view.pick(u"Save To"_s, u"SSD"_s));
    QCOMPARE(m_view.typed(u"File Name"_s), QString());
    QVERIFY(!m_view.isEnabled(u"File Name"_s, QAccessible::EditableText));
    QVERIFY(m_view.pick(u"Save To"_s, u"File"_s));
    QCOMPARE(m_view.typed(u"File Name"_s), u"mine"_s);
    QVERIFY(m_view.pick(u"Save To"_s, u"SSD"_s));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    SaveJob *job = SaveFixture::jobs().first();
    QCOMPARE(job->fileName(), QString());
    QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 20'000);
    QCOMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-save"_s),
             QByteArrayList{R"({"take":1,"start":-20,"cnt":50})"});
    // Without a name there is nothing that could be opened.
    QTRY_COMPARE(m_view.cell(u".vesk"_s, u"Status"_s), u"Complete"_s);
    QVERIFY(!m_view.rowHas(u".vesk"_s, u"Open"_s));
}

void TestDriveTakes::storedDriveIsNoChoiceForARecording()
{
    VeskApp::instance()->setSetting(u"save/dest"_s, 1);
    QVERIFY(m_view.startWithRecording(Name));
    QVERIFY(m_view.clickIn(Section, u"Save..."_s));
    QTRY_VERIFY(m_view.saveDialog());
    QCOMPARE(m_view.chosen(u"Save To"_s), u"File"_s);
    QVERIFY(m_view.textOf(u"Folder"_s) != u"no row Folder"_s);
}

void TestDriveTakes::brokenSaveToTheDriveTellsWhy()
{
    const QString file = u"shot.vesk"_s;
    QVERIFY(saveToDrive(2'000'000));
    QTRY_COMPARE(SaveFixture::jobs().first()->state(), SaveJob::Saving);
    QTRY_COMPARE(m_view.camera()->ssdWrStateValue()->variant().toInt(), 1);
    QCOMPARE(m_view.simulated()->operate({{u"ssd"_s, u"fail"_s}}), QString());
    QTRY_COMPARE(m_view.cell(file, u"Status"_s), u"Error: ssd.state = 7"_s);
    QVERIFY(m_view.pressInRow(file, u"Remove"_s));
    QTRY_VERIFY(!m_view.hasRow(file));
}

/** The drive is busy with what it saves by itself. */
void TestDriveTakes::saveThatTheCameraHoldsBackIsQueued()
{
    QVERIFY(m_view.startWithTake(1));
    QVERIFY(m_view.openSave());
    QVERIFY(m_view.pick(u"Save To"_s, u"SSD"_s));
    QVERIFY(m_view.typeInto(u"File Name"_s, u"shot"_s));
    m_view.simulated()->forceValue(u"ssd/wr_seq"_s, -5);
    QTRY_COMPARE(m_view.camera()->ssdWrSeqValue()->variant().toInt(), -5);
    QVERIFY(m_view.press(u"Save"_s));
    const QString file = u"shot.vesk"_s;
    QTRY_VERIFY(m_view.hasRow(file));
    SaveJob *job = SaveFixture::jobs().first();
    m_view.simulated()->forceValue(u"ssd/wr_seq"_s, -4);
    QTRY_COMPARE(job->state(), SaveJob::QueuedFW);
    QCOMPARE(m_view.cell(file, u"Status"_s), u"Queued"_s);
    QVERIFY(m_view.pressInRow(file, u"Remove"_s));
    QCOMPARE(SaveFixture::jobs(), QList<SaveJob *>{job});
    QCOMPARE(job->state(), SaveJob::QueuedFW);
}

VIEW_TEST_MAIN(TestDriveTakes)
#include "tst_drive_takes.moc"
