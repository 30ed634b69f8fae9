#include "camera/camera.h"
#include "sim/camera.h"
#include "sim/footage.h"
#include "take/saved_take_model.h"
#include "take/take.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Takes in the window: their tabs, menus, panel and deletion. */
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
    void takeIsDeletedAfterAQuestion_data();
    void takeIsDeletedAfterAQuestion();
    void cancelledDeletionKeepsTheTake();
    void lockedTakeIsNotDeleted_data() { takeIsDeletedAfterAQuestion_data(); }
    void lockedTakeIsNotDeleted();
    void withoutTheWarningATakeIsDeletedAtOnce_data() { takeIsDeletedAfterAQuestion_data(); }
    void withoutTheWarningATakeIsDeletedAtOnce();
    void withoutTheWarningALockedTakeStaysWithoutAWord();
    void questionIsNotAnsweredForAnotherTake();
    void sectionFoldedOnOneTakeIsFoldedOnAnotherAndTheNextStart();
    void blackReferenceOfTheCameraIsToldOverTheTake();
    void framesRecordedAndPartitionSizeAreThoseOfTheActiveTake();

private:
    enum Way { Button, TabMenu, FileMenu };

    q4sim::Camera *start(const q4sim::Config &config = {});
    Take *open(int takeId);
    QQuickItem *tab(int takeId) const;
    bool askToDelete(int way, int takeId, const QString &item) const;
    QQuickWindow *openedDialog() const;
    void answer(const QString &button) const;

    ViewFixture m_view;
    q4sim::Camera *m_simulated = nullptr;
};

void TestTakeViews::cleanup()
{
    VeskApp::instance()->settings()->remove(u"vesk/disable_take_delete_warn"_s);
    const QStringList warnings = m_view.end();
    VeskApp::instance()->settings()->remove(u"playback"_s);
    QCOMPARE(warnings, QStringList());
}

/** A camera with two takes, -20 to 29 and 0 to 99. */
q4sim::Camera *TestTakeViews::start(const q4sim::Config &config)
{
    m_simulated = m_view.startWithCamera(config);
    if (!m_simulated || m_simulated->makeTake({.first = -20, .last = 29}) != 1 ||
        m_simulated->makeTake({.first = 0, .last = 99}) != 2)
        return nullptr;
    const bool shown = QTest::qWaitFor([this] { return m_view.camera()->savedTakes()->count() == 2; });
    return shown ? m_simulated : nullptr;
}

QQuickItem *TestTakeViews::tab(int takeId) const
{
    QAccessibleInterface *found = m_view.element(u"Take %1"_s.arg(takeId), QAccessible::PageTab);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

/** Clicks the tab; the take, once its view has its values. */
Take *TestTakeViews::open(int takeId)
{
    if (!QTest::qWaitFor([&] { return tab(takeId) != nullptr; }) || !m_view.click(u"Take %1"_s.arg(takeId)))
        return nullptr;
    auto *take = qobject_cast<Take *>(VeskApp::instance()->selectedVeskObject());
    return take && QTest::qWaitFor([take] { return take->valuesInit(); }) ? take : nullptr;
}

bool TestTakeViews::askToDelete(int way, int takeId, const QString &item) const
{
    if (way == Button)
        return m_view.clickIn(u"Take"_s, u"Delete..."_s);
    if (way == TabMenu && !m_view.click(u"Take %1"_s.arg(takeId), Qt::RightButton))
        return false;
    if (way == FileMenu && !m_view.click(u"File"_s))
        return false;
    QAccessibleInterface *entry = nullptr;
    return QTest::qWaitFor([&] {
               entry = m_view.element(item, QAccessible::MenuItem);
               return entry != nullptr;
           }) &&
           ViewFixture::click(m_view.window(), entry);
}

QQuickWindow *TestTakeViews::openedDialog() const
{
    QQuickWindow *dialog = nullptr;
    const bool opened = QTest::qWaitFor([&] { return (dialog = m_view.dialog(u"VESK"_s)) != nullptr; });
    return opened ? dialog : nullptr;
}

void TestTakeViews::answer(const QString &button) const
{
    QQuickWindow *dialog = openedDialog();
    QVERIFY(dialog);
    QVERIFY(ViewFixture::click(dialog, button));
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
}

void TestTakeViews::finishedRecordingAppearsUnderItsCameraByItself()
{
    q4sim::Config config;
    config.partitions = 4;
    m_simulated = m_view.startWithCamera(config);
    QVERIFY(m_simulated);
    m_simulated->answer("PUT", u"/acq/trig_offset"_s, "10");
    QVERIFY(m_view.click(u"Record"_s));
    QTRY_COMPARE(m_simulated->value(u"acq/state"_s).toInt(), 2);
    QVERIFY(!tab(1));
    QTRY_VERIFY(m_view.shows(u"Trigger"_s));
    QVERIFY(m_view.click(u"Trigger"_s));
    QTRY_VERIFY(tab(1));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QVERIFY(open(1));
}

void TestTakeViews::tabsHangUnderTheCameraWithTheirBordersMerged()
{
    QVERIFY(start());
    QTRY_VERIFY(tab(1) && tab(2));
    ViewFixture::settle(m_view.window());
    const QAccessibleInterface *box = m_view.element(u"Simulated Q4"_s, QAccessible::PageTab);
    const auto rect = [](const QQuickItem *item) {
        return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    };
    const QRectF camera = rect(qobject_cast<QQuickItem *>(box->object()));
    QCOMPARE(rect(tab(1)), QRectF(camera.x(), camera.bottom() - 2, camera.width(), 28));
    QCOMPARE(rect(tab(2)), QRectF(camera.x(), camera.bottom() + 24, camera.width(), 28));
    QCOMPARE(tab(1)->property("color").value<QColor>(), QColor("#262626"));
}

void TestTakeViews::lockedTakeHasAnotherIcon()
{
    QVERIFY(start());
    QTRY_VERIFY(tab(2));
    QQuickItem *icon = ViewFixture::itemWithText(tab(2), u"\uEB8F"_s);
    QVERIFY(icon);
    QCOMPARE(icon->property("color").value<QColor>(), QColor("white"));
    QCOMPARE(icon->property("font").value<QFont>().pixelSize(), 16);
    m_simulated->setTakeLocked(2, true);
    QTRY_VERIFY(icon = ViewFixture::itemWithText(tab(2), u"\uF0B3"_s));
    QCOMPARE(icon->property("color").value<QColor>(), QColor("#D25F15"));
    QVERIFY(ViewFixture::itemWithText(tab(1), u"\uEB8F"_s));
    m_simulated->setTakeLocked(2, false);
    QTRY_VERIFY(ViewFixture::itemWithText(tab(2), u"\uEB8F"_s));
}

void TestTakeViews::clickOnATabOpensTheTakeAndItPlays()
{
    QVERIFY(start());
    Take *take = open(2);
    QVERIFY(take);
    QCOMPARE(take->takeId(), 2);
    QCOMPARE(take->state(), PlaybackVeskObject::Play);
    QTRY_VERIFY(take->fr() > 5);
    QTRY_VERIFY(!take->imgFrame()->image().isNull());
    const auto *border = tab(2)->property("border").value<QObject *>();
    QCOMPARE(border->property("color").value<QColor>(), QColor("#D25F15"));
    QVERIFY(m_view.click(u"Simulated Q4"_s));
    QCOMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QCOMPARE(border->property("color").value<QColor>(), QColor("#212121"));
}

void TestTakeViews::panelTellsTheRecording()
{
    QVERIFY(start());
    QVERIFY(open(1));
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
    m_simulated = m_view.startWithCamera(config);
    QVERIFY(m_simulated);
    m_simulated->answer("PUT", u"/acq/fsync_mode"_s, "1");
    QCOMPARE(m_simulated->makeTake({.first = 0, .last = 9}), 1);
    QVERIFY(open(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Frame Sync Mode"_s), u"External"_s);
}

void TestTakeViews::fileMenuOfATakeOffersItsDeletion()
{
    QVERIFY(start());
    QVERIFY(open(1));
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
    QVERIFY(start());
    Take *take = open(1);
    QVERIFY(take);
    take->pause();
    QTRY_VERIFY(!take->frameInFlight());
    m_simulated->clearRequests();
    QVERIFY(m_view.choose(u"Take"_s, u"Black Ref Mode"_s, u"Advanced"_s));
    QTRY_COMPARE(ViewFixture::bodies(*m_simulated, "PUT", u"/takes/take1/acq/corr_mode"_s),
                 QByteArrayList{"1"});
    QTRY_COMPARE(m_simulated->requests("POST", u"/xfer"_s).size(), 1);
    QTRY_COMPARE(m_view.choice(u"Take"_s, u"Black Ref Mode"_s), u"Advanced"_s);
    QVERIFY(m_view.choose(u"Take"_s, u"Black Ref Mode"_s, u"Normal"_s));
    QTRY_COMPARE(ViewFixture::bodies(*m_simulated, "PUT", u"/takes/take1/acq/corr_mode"_s),
                 QByteArrayList({"1", "0"}));
}

void TestTakeViews::correctionIsLeftAloneWhereTheCameraKnowsOnlyOne()
{
    q4sim::Config config;
    config.features[u"corr_mode"_s] = 0;
    QVERIFY(start(config));
    QVERIFY(open(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
    QVERIFY(!m_view.inSection(u"Take"_s, u"Black Ref Mode"_s));
}

void TestTakeViews::correctionCannotBePickedForAnExternalSync()
{
    q4sim::Config config;
    config.syncFps = 500;
    m_simulated = m_view.startWithCamera(config);
    QVERIFY(m_simulated);
    m_simulated->answer("PUT", u"/acq/fsync_mode"_s, "1");
    QCOMPARE(m_simulated->makeTake({.first = 0, .last = 9}), 1);
    QVERIFY(open(1));
    QTRY_VERIFY(m_view.inSection(u"Take"_s, u"Black Ref Mode"_s, QAccessible::ComboBox)->state().disabled);
}

void TestTakeViews::takeIsDeletedAfterAQuestion_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("button") << int(Button);
    QTest::newRow("tab's menu") << int(TabMenu);
    QTest::newRow("file menu") << int(FileMenu);
}

void TestTakeViews::takeIsDeletedAfterAQuestion()
{
    QFETCH(const int, way);
    QVERIFY(start());
    QVERIFY(open(2));
    QVERIFY(askToDelete(way, 2, u"Delete..."_s));
    QQuickWindow *dialog = openedDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(200, 100));
    QVERIFY(ViewFixture::element(dialog, u"Are you sure you want to delete Take 2?"_s));
    QCOMPARE(m_simulated->requests("POST", u"/del"_s).size(), 0);
    answer(u"OK"_s);
    QTRY_COMPARE(ViewFixture::bodies(*m_simulated, "POST", u"/del"_s), QByteArrayList{"{\"take\":2}"});
    QTRY_VERIFY(!tab(2));
    QTRY_COMPARE(VeskApp::instance()->selectedVeskObject(), m_view.camera());
    QVERIFY(tab(1));
    QCOMPARE(m_simulated->requests("POST", u"/rec"_s).size(), 0);
}

void TestTakeViews::cancelledDeletionKeepsTheTake()
{
    QVERIFY(start());
    QVERIFY(open(2));
    QVERIFY(askToDelete(Button, 2, {}));
    answer(u"Cancel"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_simulated->requests("POST", u"/del"_s).size(), 0);
    QVERIFY(tab(2));
}

void TestTakeViews::lockedTakeIsNotDeleted()
{
    QFETCH(const int, way);
    QVERIFY(start());
    Take *take = open(2);
    QVERIFY(take);
    m_simulated->setTakeLocked(2, true);
    QTRY_VERIFY(take->locked());
    QVERIFY(askToDelete(way, 2, u"Delete..."_s));
    QQuickWindow *dialog = openedDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(200, 100));
    QVERIFY(ViewFixture::element(dialog, u"Take 2 can't be deleted while save is in progress!"_s));
    QVERIFY(!ViewFixture::element(dialog, u"Cancel"_s));
    answer(u"OK"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_simulated->requests("POST", u"/del"_s).size(), 0);
    QVERIFY(tab(2));
}

void TestTakeViews::withoutTheWarningATakeIsDeletedAtOnce()
{
    QFETCH(const int, way);
    VeskApp::instance()->setSetting(u"vesk/disable_take_delete_warn"_s, true);
    QVERIFY(start());
    QVERIFY(open(2));
    QVERIFY(askToDelete(way, 2, u"Delete"_s));
    QTRY_COMPARE(ViewFixture::bodies(*m_simulated, "POST", u"/del"_s), QByteArrayList{"{\"take\":2}"});
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QTRY_VERIFY(!tab(2));
}

void TestTakeViews::withoutTheWarningALockedTakeStaysWithoutAWord()
{
    VeskApp::instance()->setSetting(u"vesk/disable_take_delete_warn"_s, true);
    QVERIFY(start());
    Take *take = open(2);
    QVERIFY(take);
    m_simulated->setTakeLocked(2, true);
    QTRY_VERIFY(take->locked());
    QVERIFY(askToDelete(Button, 2, {}));
    QVERIFY(m_view.waitForPolls(2));
    QVERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(m_simulated->requests("POST", u"/del"_s).size(), 0);
}

void TestTakeViews::questionIsNotAnsweredForAnotherTake()
{
    QVERIFY(start());
    QVERIFY(open(2));
    QVERIFY(askToDelete(FileMenu, 2, u"Delete..."_s));
    QVERIFY(openedDialog());
    QVERIFY(open(1));
    QTRY_VERIFY(!m_view.dialog(u"VESK"_s));
    QCOMPARE(m_simulated->requests("POST", u"/del"_s).size(), 0);
}

void TestTakeViews::sectionFoldedOnOneTakeIsFoldedOnAnotherAndTheNextStart()
{
    QVERIFY(start());
    QVERIFY(open(1));
    QTRY_VERIFY(m_view.inSection(u"Camera"_s, u"Serial"_s));
    QVERIFY(m_view.click(u"Camera"_s));
    QTRY_VERIFY(!m_view.inSection(u"Camera"_s, u"Serial"_s));
    QVERIFY(open(2));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"2"_s);
    QVERIFY(!m_view.inSection(u"Camera"_s, u"Serial"_s));
    QCOMPARE(VeskApp::instance()->setting(u"playback/camera_pane_expanded"_s).toBool(), false);
    QCOMPARE(m_view.end(), QStringList());
    QVERIFY(start());
    QVERIFY(open(1));
    QTRY_COMPARE(m_view.rowText(u"Take"_s, u"Take Number"_s), u"1"_s);
    QVERIFY(!m_view.inSection(u"Camera"_s, u"Serial"_s));
}

void TestTakeViews::blackReferenceOfTheCameraIsToldOverTheTake()
{
    QVERIFY(start());
    QVERIFY(open(1));
    QVERIFY(!m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
    m_simulated->forceValue(u"acq/bref_state"_s, Camera::BrefInProgress);
    QTRY_VERIFY(m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
    m_simulated->forceValue(u"acq/bref_state"_s, 0);
    QTRY_VERIFY(!m_view.itemWithText(u"BLACK REF IN PROGRESS..."_s));
}

void TestTakeViews::framesRecordedAndPartitionSizeAreThoseOfTheActiveTake()
{
    m_simulated = m_view.startWithCamera();
    QVERIFY(m_simulated);
    const QString section = u"Frame Buffer"_s;
    QTRY_COMPARE(m_view.rowText(section, u"Recorded Frames"_s), QString());
    QCOMPARE(m_view.rowText(section, u"Partition Size"_s), QString());
    QVERIFY(m_view.click(u"Record"_s));
    QTRY_VERIFY(m_view.camera()->activeTake());
    const int size = m_simulated->takeDescription(1).value("prtn_fr_cnt"_L1).toInt();
    QTRY_COMPARE(m_view.rowText(section, u"Partition Size"_s), QString::number(size));
    QTRY_VERIFY(m_view.rowText(section, u"Recorded Frames"_s).toInt() > 100);
    const int before = m_view.rowText(section, u"Recorded Frames"_s).toInt();
    QTRY_VERIFY(m_view.rowText(section, u"Recorded Frames"_s).toInt() > before);
}

VIEW_TEST_MAIN(TestTakeViews)
#include "tst_take_views.moc"
