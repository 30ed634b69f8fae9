#include "camera/camera.h"
#include "sim/camera.h"
#include "sim/footage.h"
#include "take/saved_take_model.h"
#include "take/take.h"
#include "tests/qml/take_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Takes in the window: their tabs, menus and panel. */
class TestTakeViews : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void finishedRecordingAppearsUnderItsCameraByItself();
    void tabsHangUnderTheCameraWithTheirBordersMerged();
    void lockedTakeHasAnotherIcon();
    void clickOnATabOpensTheTakeAndItPlays();
    void panelTellsTheRecording();
    void syncModeIsToldInWords();
    void fileMenuOfATakeOffersItsDeletion();
    void correctionIsPickedAfterTheRecording();
    void correctionIsLeftAloneWhereTheCameraKnowsOnlyOne();
    void correctionCannotBePickedForAnExternalSync();
    void sectionFoldedOnOneTakeIsFoldedOnAnotherAndTheNextStart();
    void histogramOfARestingTakeIsThereWhenItIsOpenedAgain();
    void tabThatTheKeysGoToComesIntoSight();
    void blackReferenceOfTheCameraIsToldOverTheTake();
    void framesRecordedAndPartitionSizeAreThoseOfTheActiveTake();

private:
    TakeFixture m_view;
};

void TestTakeViews::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestTakeViews::finishedRecordingAppearsUnderItsCameraByItself()
{
    q4sim::Config config;
    config.partitions = 4;
    QVERIFY(m_view.startWithCamera(config));
    m_view.simulated()->answer("PUT", u"/acq/trig_offset"_s, "10");
    QVERIFY(m_view.click(u"Record"_s));
    QTRY_COMPARE(m_view.simulated()->value(u"acq/state"_s).toInt(), 2);
    QVERIFY(!m_view.tab(1));
    QTRY_VERIFY(m_view.shows(u"Trigger"_s));
    QVERIFY(m_view.click(u"Trigger"_s));
    QTRY_VERIFY(m_view.tab(1));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QVERIFY(m_view.openTake(1));
}

void TestTakeViews::tabsHangUnderTheCameraWithTheirBordersMerged()
{
    QVERIFY(m_view.startWithTakes());
    QTRY_VERIFY(m_view.tab(1) && m_view.tab(2));
    ViewFixture::settle(m_view.window());
    const QAccessibleInterface *box = m_view.element(u"Simulated Q4"_s, QAccessible::PageTab);
    const auto rect = [](const QQuickItem *item) {
        return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    };
    const QRectF camera = rect(qobject_cast<QQuickItem *>(box->object()));
    QCOMPARE(rect(m_view.tab(1)), QRectF(camera.x(), camera.bottom() - 2, camera.width(), 28));
    QCOMPARE(rect(m_view.tab(2)), QRectF(camera.x(), camera.bottom() + 24, camera.width(), 28));
    QCOMPARE(m_view.tab(1)->property("color").value<QColor>(), QColor("#262626"));
    // Nowhere else: a take is no source of its own beside its camera.
    QCOMPARE(VeskApp::instance()->veskObjModel()->count(), 1);
}

void TestTakeViews::lockedTakeHasAnotherIcon()
{
    QVERIFY(m_view.startWithTakes());
    QTRY_VERIFY(m_view.tab(2));
    QQuickItem *icon = ViewFixture::itemWithText(m_view.tab(2), u"\uEB8F"_s);
    QVERIFY(icon);
    QCOMPARE(icon->property("color").value<QColor>(), QColor("white"));
    QCOMPARE(icon->property("font").value<QFont>().pixelSize(), 16);
    m_view.simulated()->setTakeLocked(2, true);
    QTRY_VERIFY(icon = ViewFixture::itemWithText(m_view.tab(2), u"\uF0B3"_s));
    QCOMPARE(icon->property("color").value<QColor>(), QColor("#D25F15"));
    QVERIFY(ViewFixture::itemWithText(m_view.tab(1), u"\uEB8F"_s));
    m_view.simulated()->setTakeLocked(2, false);
    QTRY_VERIFY(ViewFixture::itemWithText(m_view.tab(2), u"\uEB8F"_s));
}

void TestTakeViews::clickOnATabOpensTheTakeAndItPlays()
{
    QVERIFY(m_view.startWithTakes());
    Take *take = m_view.openTake(2);
    QVERIFY(take);
    QCOMPARE(take->takeId(), 2);
    QCOMPARE(take->state(), PlaybackVeskObject::Play);
    QTRY_VERIFY(take->fr() > 5);
    QTRY_VERIFY(!take->imgFrame()->image().isNull());
    const auto *border = m_view.tab(2)->property("border").value<QObject *>();
    QCOMPARE(border->property("color").value<QColor>(), QColor("#D25F15"));
    QVERIFY(m_view.click(u"Simulated Q4"_s));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QCOMPARE(border->property("color").value<QColor>(), QColor("#212121"));
}

void TestTakeViews::panelTellsTheRecording()
{
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
    QCOMPARE(m_view.rowText(u"Take"_s, u"Resolution"_s), u"640x480"_s);
    QCOMPARE(m_view.rowText(u"Take"_s, u"Frame Rate"_s), u"1000 fps"_s);
    QCOMPARE(m_view.rowText(u"Take"_s, u"Exposure Time"_s), u"499.88 µs"_s);
    QCOMPARE(m_view.rowText(u"Take"_s, u"Frame Sync Mode"_s), u"Internal"_s);
    QCOMPARE(m_view.choice(u"Take"_s, u"Black Ref Mode"_s), u"Normal"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Name"_s), u"Simulated Q4"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Serial"_s), u"Q4-00001"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Model"_s), u"Q4"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Firmware Version"_s), u"3.2.1"_s);
    QVERIFY(!m_view.shows(u"Acquisition"_s));
}

void TestTakeViews::syncModeIsToldInWords()
{
    q4sim::Config config;
    config.syncFps = 500;
    QVERIFY(m_view.startWithCamera(config));
    m_view.simulated()->answer("PUT", u"/acq/fsync_mode"_s, "1");
    QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
    QVERIFY(m_view.openTake(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Frame Sync Mode"_s), u"External"_s);
}

void TestTakeViews::fileMenuOfATakeOffersItsDeletion()
{
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(1));
    QVERIFY(m_view.click(u"File"_s));
    QTRY_VERIFY(m_view.shows(u"Connect Camera..."_s));
    QVERIFY(m_view.element(u"Delete..."_s, QAccessible::MenuItem));
    QVERIFY(m_view.shows(u"Exit"_s));
    QVERIFY(!m_view.shows(u"Disconnect"_s));
    QVERIFY(!m_view.shows(u"Delete All Takes..."_s));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
}

void TestTakeViews::correctionIsPickedAfterTheRecording()
{
    QVERIFY(m_view.startWithTakes());
    Take *take = m_view.openTake(1);
    QVERIFY(take);
    take->pause();
    QTRY_VERIFY(!take->frameInFlight());
    m_view.simulated()->clearRequests();
    QVERIFY(m_view.choose(u"Take"_s, u"Black Ref Mode"_s, u"Advanced"_s));
    QTRY_COMPARE(ViewFixture::bodies(*m_view.simulated(), "PUT", u"/takes/take1/acq/corr_mode"_s),
                 QByteArrayList{"1"});
    QTRY_COMPARE(m_view.simulated()->requests("POST", u"/xfer"_s).size(), 1);
    QTRY_COMPARE(m_view.choice(u"Take"_s, u"Black Ref Mode"_s), u"Advanced"_s);
    QVERIFY(m_view.choose(u"Take"_s, u"Black Ref Mode"_s, u"Normal"_s));
    QTRY_COMPARE(ViewFixture::bodies(*m_view.simulated(), "PUT", u"/takes/take1/acq/corr_mode"_s),
                 QByteArrayList({"1", "0"}));
}

void TestTakeViews::correctionIsLeftAloneWhereTheCameraKnowsOnlyOne()
{
    q4sim::Config config;
    config.features[u"corr_mode"_s] = 0;
    QVERIFY(m_view.startWithTakes(config));
    QVERIFY(m_view.openTake(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
    QVERIFY(!m_view.inSection(u"Take"_s, u"Black Ref Mode"_s));
}

void TestTakeViews::correctionCannotBePickedForAnExternalSync()
{
    q4sim::Config config;
    config.syncFps = 500;
    QVERIFY(m_view.startWithCamera(config));
    m_view.simulated()->answer("PUT", u"/acq/fsync_mode"_s, "1");
    QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 9}), 1);
    QVERIFY(m_view.openTake(1));
    QTRY_VERIFY(m_view.inSection(u"Take"_s, u"Black Ref Mode"_s, QAccessible::ComboBox)->state().disabled);
}

void TestTakeViews::sectionFoldedOnOneTakeIsFoldedOnAnotherAndTheNextStart()
{
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(1));
    QTRY_VERIFY(m_view.inSection(u"Camera"_s, u"Serial"_s));
    QVERIFY(m_view.click(u"Camera"_s));
    QTRY_VERIFY(!m_view.inSection(u"Camera"_s, u"Serial"_s));
    QVERIFY(m_view.openTake(2));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"2"_s);
    QVERIFY(!m_view.inSection(u"Camera"_s, u"Serial"_s));
    QCOMPARE(VeskApp::instance()->setting(u"playback/camera_pane_expanded"_s).toBool(), false);
    QCOMPARE(m_view.ViewFixture::end(), QStringList()); // the panes stay as they are kept
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
    QVERIFY(!m_view.inSection(u"Camera"_s, u"Serial"_s));
}

/** Pixels of the histogram that are no background. */
static int drawnPixels(const ViewFixture &view)
{
    QAccessibleInterface *element = view.inSection(u"Image Tools"_s, u"Histogram"_s, QAccessible::Graphic);
    const auto *item = element ? qobject_cast<QQuickItem *>(element->object()) : nullptr;
    if (!item)
        return 0;
    const QImage picture =
        view.window()->grabWindow().copy(item->mapRectToScene(item->boundingRect()).toRect());
    int drawn = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            drawn += qMax(picture.pixelColor(x, y).red(), picture.pixelColor(x, y).green()) > 120;
    }
    return drawn;
}

void TestTakeViews::histogramOfARestingTakeIsThereWhenItIsOpenedAgain()
{
    QVERIFY(m_view.startWithTakes());
    Take *take = m_view.openTake(1);
    QVERIFY(take);
    QTRY_VERIFY(drawnPixels(m_view) > 50);
    take->pause();
    QTRY_VERIFY(!take->frameInFlight());
    QVERIFY(m_view.openTake(2));
    m_view.simulated()->clearRequests();
    QVERIFY(m_view.openTake(1));
    QTRY_VERIFY(drawnPixels(m_view) > 50);
    // Without a frame that could have brought it.
    const QByteArrayList frames = ViewFixture::bodies(*m_view.simulated(), "POST", u"/xfer"_s);
    for (const QByteArray &body : frames)
        QVERIFY2(!body.contains("\"take\":1"), body.constData());
}

void TestTakeViews::tabThatTheKeysGoToComesIntoSight()
{
    q4sim::Config config;
    config.partitions = 40;
    QVERIFY(m_view.startWithCamera(config));
    for (int takeId = 1; takeId <= 40; ++takeId)
        QCOMPARE(m_view.simulated()->makeTake({.first = 0, .last = 1}), takeId);
    QTRY_VERIFY(m_view.tab(40));
    QQuickItem *last = m_view.tab(40);
    const auto inSight = [&] {
        const QRectF place = last->mapRectToScene(last->boundingRect());
        return place.top() >= 0 && place.bottom() <= m_view.window()->height();
    };
    ViewFixture::settle(m_view.window());
    QVERIFY(!inSight());
    last->forceActiveFocus(Qt::TabFocusReason);
    QTRY_VERIFY(inSight());
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QCOMPARE(qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject())->takeId(), 40);
    QVERIFY(inSight());
}

void TestTakeViews::blackReferenceOfTheCameraIsToldOverTheTake()
{
    QVERIFY(m_view.startWithTakes());
    QVERIFY(m_view.openTake(1));
    QVERIFY(!m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
    m_view.simulated()->forceValue(u"acq/bref_state"_s, Camera::BrefInProgress);
    QTRY_VERIFY(m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
    m_view.simulated()->forceValue(u"acq/bref_state"_s, 0);
    QTRY_VERIFY(!m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
}

void TestTakeViews::framesRecordedAndPartitionSizeAreThoseOfTheActiveTake()
{
    QVERIFY(m_view.startWithCamera());
    const QString section = u"Frame Buffer"_s;
    QTRY_COMPARE(m_view.rowText(section, u"Recorded Frames"_s), QString());
    QCOMPARE(m_view.rowText(section, u"Partition Size"_s), QString());
    QVERIFY(m_view.click(u"Record"_s));
    QTRY_VERIFY(m_view.camera()->activeTake());
    const int size = m_view.simulated()->takeDescription(1).value("prtn_fr_cnt"_L1).toInt();
    QTRY_COMPARE(m_view.rowText(section, u"Partition Size"_s), QString::number(size));
    QTRY_VERIFY(m_view.rowText(section, u"Recorded Frames"_s).toInt() > 100);
    const int before = m_view.rowText(section, u"Recorded Frames"_s).toInt();
    QTRY_VERIFY(m_view.rowText(section, u"Recorded Frames"_s).toInt() > before);
}

VIEW_TEST_MAIN(TestTakeViews)
#include "tst_take_views.moc"
