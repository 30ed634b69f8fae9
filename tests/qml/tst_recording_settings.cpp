#include "camera/camera.h"
#include "sim/camera.h"
#include "take/saved_take_model.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Acquisition = u"Acquisition"_s;
static const QString FrameBuffer = u"Frame Buffer"_s;

/** What a recording is made with: the choices of the acquisition section, and the frame memory. */
class TestRecordingSettings : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void pickedResolutionIsTakenByTheCamera();
    void resolutionAndOffsetAreOfferedInStandbyAndRecordingOnly_data();
    void resolutionAndOffsetAreOfferedInStandbyAndRecordingOnly();
    void externalSyncDisablesTheFrameRate();
    void frameRateIsRedWithoutASyncSignal();
    void blackReferenceModeKeepsOtherBits();
    void blackReferenceModeIsOfferedWithTheFeatureOnly();
    void takeIsTold_data();
    void takeIsTold();
    void partitionIsOfferedWhileNoTakeIsSaved_data();
    void partitionIsOfferedWhileNoTakeIsSaved();
    void partitionDialogDividesTheMemory_data();
    void partitionDialogDividesTheMemory();
    void partitionCountRefuses_data();
    void partitionCountRefuses();
    void partitionDialogClosesWhenATakeIsSaved();

private:
    bool enabled(const QString &section, const QString &name) const;
    QColor labelColor(const QString &label) const;
    QQuickWindow *openPartitionDialog();

    ViewFixture m_view;
};

void TestRecordingSettings::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

bool TestRecordingSettings::enabled(const QString &section, const QString &name) const
{
    QAccessibleInterface *found = m_view.inSection(section, name, QAccessible::ComboBox);
    if (!found)
        found = m_view.inSection(section, name, QAccessible::Button);
    return found && !found->state().disabled;
}

QColor TestRecordingSettings::labelColor(const QString &label) const
{
    return m_view.itemWithText(label)->property("color").value<QColor>();
}

void TestRecordingSettings::pickedResolutionIsTakenByTheCamera()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.choice(Acquisition, u"Resolution"_s), u"640x480"_s);
    QVERIFY(m_view.openList(Acquisition, u"Resolution"_s));
    QTRY_VERIFY(m_view.shows(u"320x120"_s, QAccessible::MenuItem));
    auto *entry = qobject_cast<QQuickItem *>(m_view.element(u"320x120"_s, QAccessible::MenuItem)->object());
    QQuickItem *list = entry->parentItem()->parentItem();
    while (list->parentItem() && list->parentItem()->height() < 200)
        list = list->parentItem();
    QCOMPARE(list->height(), 150.0);
    QVERIFY(m_view.click(u"320x120"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/res"_s), QByteArrayList{"\"320x120\""});
    QTRY_COMPARE(simulated->value(u"acq/res"_s).toString(), u"320x120"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.choice(Acquisition, u"Resolution"_s), u"320x120"_s);
    // A smaller picture can be taken faster: 120 * (320 / 8 + 20) + 400 clocks of 100 MHz.
    QVERIFY(m_view.type(Acquisition, u"Frame Rate"_s, u"100000000"_s));
    QTRY_COMPARE(m_view.fieldText(Acquisition, u"Frame Rate"_s), u"13157"_s);
}

void TestRecordingSettings::resolutionAndOffsetAreOfferedInStandbyAndRecordingOnly_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("offered");
    QTest::newRow("standby") << 1 << true;
    QTest::newRow("recording") << 2 << true;
    QTest::newRow("triggered") << 3 << false;
    QTest::newRow("recording, 6") << 6 << true;
    QTest::newRow("unknown") << 9 << false;
}

void TestRecordingSettings::resolutionAndOffsetAreOfferedInStandbyAndRecordingOnly()
{
    QFETCH(const int, state);
    QFETCH(const bool, offered);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/state"_s, state);
    QTRY_COMPARE(m_view.camera()->acqStateValue()->variant().toInt(), state);
    QCOMPARE(enabled(Acquisition, u"Resolution"_s), offered);
    QCOMPARE(enabled(Acquisition, u"Trigger Offset"_s), offered);
    QVERIFY(enabled(Acquisition, u"Frame Rate"_s));
    QVERIFY(enabled(Acquisition, u"Exposure Time"_s));
    QVERIFY(enabled(Acquisition, u"Frame Sync Mode"_s));
}

void TestRecordingSettings::externalSyncDisablesTheFrameRate()
{
    q4sim::Config config;
    config.syncFps = 500;
    q4sim::Camera *simulated = m_view.startWithCamera(config);
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.choice(Acquisition, u"Frame Sync Mode"_s), u"Internal"_s);
    QVERIFY(m_view.choose(Acquisition, u"Frame Sync Mode"_s, u"External"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/fsync_mode"_s), QByteArrayList{"1"});
    QTRY_VERIFY(!enabled(Acquisition, u"Frame Rate"_s));
    QTRY_COMPARE(m_view.fieldText(Acquisition, u"Frame Rate"_s), u"500"_s);
    QCOMPARE(labelColor(u"Frame Rate"_s), QColor(u"white"_s));
    QVERIFY(!m_view.field(Acquisition, u"Frame Rate"_s)->isEnabled());
    QCOMPARE(m_view.field(Acquisition, u"Frame Rate"_s)->property("color").value<QColor>(),
             QColor(u"darkgray"_s));
    QVERIFY(m_view.choose(Acquisition, u"Frame Sync Mode"_s, u"Internal"_s));
    QTRY_COMPARE(simulated->value(u"acq/fsync_mode"_s).toInt(), 0);
    QTRY_VERIFY(enabled(Acquisition, u"Frame Rate"_s));
}

void TestRecordingSettings::frameRateIsRedWithoutASyncSignal()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.choose(Acquisition, u"Frame Sync Mode"_s, u"External"_s));
    QTRY_COMPARE(labelColor(u"Frame Rate"_s), QColor(u"red"_s));
    QCOMPARE(simulated->operate({{"sync_fps", 700}}), QString());
    QTRY_COMPARE(labelColor(u"Frame Rate"_s), QColor(u"white"_s));
}

void TestRecordingSettings::blackReferenceModeKeepsOtherBits()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/corr_mode"_s, 6);
    QTRY_COMPARE(m_view.camera()->corrModeValue()->variant().toInt(), 6);
    QCOMPARE(m_view.choice(Acquisition, u"Black Ref Mode"_s), u"Normal"_s);
    QVERIFY(m_view.choose(Acquisition, u"Black Ref Mode"_s, u"Advanced"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/corr_mode"_s), QByteArrayList{"7"});
    simulated->forceValue(u"acq/corr_mode"_s, 7);
    QTRY_COMPARE(m_view.choice(Acquisition, u"Black Ref Mode"_s), u"Advanced"_s);
    QVERIFY(m_view.waitForPolls(2));
    QVERIFY(m_view.choose(Acquisition, u"Black Ref Mode"_s, u"Normal"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/corr_mode"_s), (QByteArrayList{"7", "6"}));
    // The camera says otherwise, and that is what shows.
    QTRY_COMPARE(m_view.choice(Acquisition, u"Black Ref Mode"_s), u"Advanced"_s);
}

void TestRecordingSettings::blackReferenceModeIsOfferedWithTheFeatureOnly()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(enabled(Acquisition, u"Black Ref Mode"_s));
    for (const int mode : {1, 2, 3}) {
        simulated->forceValue(u"acq/fsync_mode"_s, mode);
        QTRY_VERIFY(!enabled(Acquisition, u"Black Ref Mode"_s));
    }
    for (const int features : {0, 2}) {
        simulated->forceValue(u"features/corr_mode"_s, 1);
        QTRY_VERIFY(m_view.inSection(Acquisition, u"Black Ref Mode"_s));
        simulated->forceValue(u"features/corr_mode"_s, features);
        QTRY_VERIFY(!m_view.inSection(Acquisition, u"Black Ref Mode"_s));
    }
}

void TestRecordingSettings::takeIsTold_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("text");
    QTest::newRow("standby") << 1 << u"STBY"_s;
    QTest::newRow("recording") << 2 << u"3 / 4"_s;
    QTest::newRow("triggered") << 3 << u"3 / 4"_s;
    QTest::newRow("recording, 6") << 6 << QString();
    QTest::newRow("unknown") << 9 << QString();
}

void TestRecordingSettings::takeIsTold()
{
    QFETCH(const int, state);
    QFETCH(const QString, text);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/active_take"_s, 3);
    simulated->forceValue(u"acq/state"_s, state);
    QTRY_COMPARE(m_view.camera()->acqStateValue()->variant().toInt(), state);
    QTRY_COMPARE(m_view.rowText(FrameBuffer, u"Take"_s), text);
}

void TestRecordingSettings::partitionIsOfferedWhileNoTakeIsSaved_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QJsonArray>("saved");
    QTest::addColumn<bool>("offered");
    QTest::newRow("standby") << 1 << QJsonArray{} << true;
    QTest::newRow("recording") << 2 << QJsonArray{} << true;
    QTest::newRow("recording, 6") << 6 << QJsonArray{} << true;
    QTest::newRow("triggered") << 3 << QJsonArray{} << false;
    QTest::newRow("one take") << 1 << QJsonArray{1} << false;
    QTest::newRow("last of four takes") << 1 << QJsonArray{4} << false;
    QTest::newRow("all takes") << 1 << QJsonArray{1, 2, 3, 4} << false;
}

void TestRecordingSettings::partitionIsOfferedWhileNoTakeIsSaved()
{
    QFETCH(const int, state);
    QFETCH(const QJsonArray, saved);
    QFETCH(const bool, offered);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/saved_takes"_s, saved);
    simulated->forceValue(u"acq/state"_s, state);
    QTRY_COMPARE(m_view.camera()->acqStateValue()->variant().toInt(), state);
    QTRY_COMPARE(m_view.camera()->savedTakes()->count(), int(saved.size()));
    QCOMPARE(enabled(FrameBuffer, u"Partition"_s), offered);
}

QQuickWindow *TestRecordingSettings::openPartitionDialog()
{
    if (!m_view.clickIn(FrameBuffer, u"Partition"_s) ||
        !QTest::qWaitFor([this] { return m_view.dialog(u"Partition"_s) != nullptr; }))
        return nullptr;
    QQuickWindow *dialog = m_view.dialog(u"Partition"_s);
    return QTest::qWaitForWindowActive(dialog) ? dialog : nullptr;
}

static void typeCount(QQuickWindow *dialog, const QByteArray &text)
{
    QTest::keySequence(dialog, QKeySequence::SelectAll);
    QTest::keyClick(dialog, Qt::Key_Delete);
    for (const char key : text)
        QTest::keyClick(dialog, key);
}

static QString countIn(QQuickWindow *dialog)
{
    return ViewFixture::element(dialog, u"Partition Count"_s, QAccessible::EditableText)
        ->text(QAccessible::Value);
}

void TestRecordingSettings::partitionDialogDividesTheMemory_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<QByteArray>("count");
    QTest::newRow("button") << false << QByteArray("8");
    QTest::newRow("Return") << true << QByteArray("1024");
    QTest::newRow("one") << false << QByteArray("1");
}

void TestRecordingSettings::partitionDialogDividesTheMemory()
{
    QFETCH(const bool, byKey);
    QFETCH(const QByteArray, count);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QQuickWindow *dialog = openPartitionDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(175, 100));
    QCOMPARE(dialog->minimumSize(), QSize(175, 100));
    QCOMPARE(dialog->maximumSize(), QSize(175, 100));
    QCOMPARE(dialog->modality(), Qt::NonModal);
    QVERIFY(ViewFixture::element(dialog, u"Partition Count:"_s));
    QCOMPARE(countIn(dialog), u"4"_s);
    typeCount(dialog, count);
    if (byKey)
        QTest::keyClick(dialog, Qt::Key_Return);
    else
        QVERIFY(ViewFixture::click(dialog, u"OK"_s));
    QTRY_VERIFY(!m_view.dialog(u"Partition"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/prtn"_s),
                 QByteArrayList{"{\"cnt\":" + count + "}"});
    QTRY_COMPARE(simulated->value(u"acq/prtn_cnt"_s).toInt(), count.toInt());
}

void TestRecordingSettings::partitionCountRefuses_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QString>("left");
    QTest::newRow("0") << QByteArray("0") << u"0"_s;
    QTest::newRow("1025") << QByteArray("1025") << u"1025"_s;
    QTest::newRow("9999") << QByteArray("9999") << u"9999"_s;
    QTest::newRow("letters") << QByteArray("abc") << QString();
    QTest::newRow("sign") << QByteArray("-") << QString();
}

void TestRecordingSettings::partitionCountRefuses()
{
    QFETCH(const QByteArray, typed);
    QFETCH(const QString, left);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QQuickWindow *dialog = openPartitionDialog();
    QVERIFY(dialog);
    typeCount(dialog, typed);
    QCOMPARE(countIn(dialog), left);
    QVERIFY(ViewFixture::element(dialog, u"OK"_s)->state().disabled);
    QTest::keyClick(dialog, Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!m_view.dialog(u"Partition"_s));
    QCOMPARE(simulated->requests("POST", u"/prtn"_s).size(), 0);
}

void TestRecordingSettings::partitionDialogClosesWhenATakeIsSaved()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(openPartitionDialog());
    simulated->forceValue(u"acq/saved_takes"_s, QJsonArray{1});
    QTRY_VERIFY(!m_view.dialog(u"Partition"_s));
    QCOMPARE(simulated->requests("POST", u"/prtn"_s).size(), 0);
    simulated->forceValue(u"acq/saved_takes"_s, QJsonArray{});
    QTRY_VERIFY(enabled(FrameBuffer, u"Partition"_s));
    QVERIFY(openPartitionDialog());
    simulated->forceValue(u"acq/state"_s, 3);
    QTRY_VERIFY(!m_view.dialog(u"Partition"_s));
}

VIEW_TEST_MAIN(TestRecordingSettings)
#include "tst_recording_settings.moc"
