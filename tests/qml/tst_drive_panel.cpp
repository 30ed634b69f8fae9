#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Drive = u"SSD"_s;
static const QString Autosave = u"SSD Autosave"_s;

/** The sections of the drive and of what the camera saves to it by itself. */
class TestDrivePanel : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void stateIsTold();
    void saveIsToldWithItsProgress();
    void storageIsToldInGigabytes();
    void buttonsFollowTheState();
    void ejectAndOpenAreSent();
    void formatIsHiddenWithoutTheFeature();
    void autosaveIsHiddenBelowItsFeature();
    void autosaveShowsWhatItsModeNeeds();
    void autosaveBitsKeepTheOthers();
    void numbersAreLimited_data();
    void numbersAreLimited();
    void numberFieldShowsWhatTheCameraReports();
    void pollLeavesANumberThatIsBeingTyped();

private:
    bool enabled(const QString &name) const;
    q4sim::Camera *startWithMode(int mode);

    ViewFixture m_view;
};

void TestDrivePanel::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

bool TestDrivePanel::enabled(const QString &name) const
{
    return !m_view.inSection(Drive, name, QAccessible::Button)->state().disabled;
}

void TestDrivePanel::stateIsTold()
{
    const QList<std::pair<int, QString>> rows = {
        {0, u"Removed"_s},     {1, u"Mounting"_s},      {2, u"Mounting"_s}, {3, u"Ready"_s},
        {4, u"Ejecting"_s},    {5, u"Ejecting"_s},      {6, u"Ejected"_s},  {7, u"Error"_s},
        {8, u"Unformatted"_s}, {9, u"Formatting..."_s}, {10, u"Error"_s},   {-1, u"Error"_s}};
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.rowText(Drive, u"Name"_s), u"Q4SSD"_s);
    for (const auto &[state, text] : rows) {
        simulated->forceValue(u"ssd/state"_s, state);
        QTRY_COMPARE(m_view.camera()->ssdStateValue()->variant().toInt(), state);
        QCOMPARE(m_view.rowText(Drive, u"State"_s), text);
        QCOMPARE(m_view.rowText(Drive, u"Storage Used"_s).isEmpty(), state != 3);
    }
}

void TestDrivePanel::saveIsToldWithItsProgress()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"ssd/wr_state"_s, 1);
    simulated->forceValue(u"ssd/progress"_s, 37);
    QTRY_COMPARE(m_view.rowText(Drive, u"State"_s), u"Saving...37%"_s);
    simulated->forceValue(u"ssd/progress"_s, 100);
    QTRY_COMPARE(m_view.rowText(Drive, u"State"_s), u"Saving...100%"_s);
    simulated->forceValue(u"ssd/wr_state"_s, 0);
    QTRY_COMPARE(m_view.rowText(Drive, u"State"_s), u"Ready"_s);
}

void TestDrivePanel::storageIsToldInGigabytes()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    // Hexadecimal texts: 1 000 204 886 016 and 499 500 000 000 bytes.
    simulated->forceValue(u"ssd/size"_s, u"e8e0db6000"_s);
    simulated->forceValue(u"ssd/used"_s, u"744c997300"_s);
    QTRY_COMPARE(m_view.rowText(Drive, u"Storage Used"_s), u"500 GB of 1000 GB"_s);
    simulated->forceValue(u"ssd/used"_s, u"0"_s);
    QTRY_COMPARE(m_view.rowText(Drive, u"Storage Used"_s), u"0 GB of 1000 GB"_s);
}

void TestDrivePanel::buttonsFollowTheState()
{
    struct Row {
        int state;
        int writing;
        bool open;
        bool eject;
    };
    const QList<Row> rows = {{3, 0, true, true},   {3, 1, true, false},  {3, 2, true, false},
                             {8, 0, false, true},  {8, 1, false, false}, {0, 0, false, false},
                             {2, 0, false, false}, {6, 0, false, false}, {7, 0, false, false},
                             {9, 0, false, false}};
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (const Row &row : rows) {
        simulated->forceValue(u"ssd/state"_s, row.state);
        simulated->forceValue(u"ssd/wr_state"_s, row.writing);
        QTRY_COMPARE(m_view.camera()->ssdStateValue()->variant().toInt(), row.state);
        QTRY_COMPARE(m_view.camera()->ssdWrStateValue()->variant().toInt(), row.writing);
        QCOMPARE(enabled(u"Open SSD Take"_s), row.open);
        QCOMPARE(enabled(u"Eject"_s), row.eject);
        QCOMPARE(enabled(u"Format"_s), row.eject);
    }
}

void TestDrivePanel::ejectAndOpenAreSent()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.itemWithText(u"\uEC87"_s));
    QVERIFY(m_view.clickIn(Drive, u"Open SSD Take"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "POST", u"/ssd-ls"_s), QByteArrayList{"{\"long\": 1}"});
    QVERIFY(m_view.clickIn(Drive, u"Eject"_s));
    QTRY_COMPARE(simulated->requests("POST", u"/ssd-umount"_s).size(), 1);
    QTRY_COMPARE(m_view.rowText(Drive, u"State"_s), u"Ejected"_s);
    QVERIFY(!enabled(u"Eject"_s));
}

void TestDrivePanel::formatIsHiddenWithoutTheFeature()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(Drive, u"Format"_s));
    simulated->forceValue(u"features/ssd-format"_s, 0);
    QTRY_VERIFY(!m_view.inSection(Drive, u"Format"_s));
    QVERIFY(m_view.inSection(Drive, u"Eject"_s));
}

void TestDrivePanel::autosaveIsHiddenBelowItsFeature()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.shows(Autosave));
    for (const int level : {2, 3, 0, 4}) {
        simulated->forceValue(u"features/ssd-save"_s, level);
        QTRY_COMPARE(m_view.shows(Autosave), level >= 3);
    }
}

void TestDrivePanel::autosaveShowsWhatItsModeNeeds()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (int mode = 7; mode >= 0; --mode) {
        simulated->forceValue(u"ssd/autosave/mode"_s, mode);
        QTRY_COMPARE(m_view.camera()->ssdAutosaveModeValue()->variant().toInt(), mode);
        const bool on = (mode & 1) != 0;
        QCOMPARE(m_view.choice(Autosave, u"Mode"_s), on ? u"Enabled"_s : u"Disabled"_s);
        for (const QString &label : {u"Save"_s, u"After Save"_s, u"File Name"_s, u"File Name Seq"_s})
            QCOMPARE(m_view.inSection(Autosave, label) != nullptr, on);
        for (const QString &label : {u"Start Frame"_s, u"Frame Count"_s})
            QCOMPARE(m_view.inSection(Autosave, label) != nullptr, on && (mode & 2) != 0);
        if (!on)
            continue;
        QCOMPARE(m_view.choice(Autosave, u"Save"_s), mode & 2 ? u"Selection"_s : u"All Frames"_s);
        QCOMPARE(m_view.choice(Autosave, u"After Save"_s), mode & 4 ? u"Delete Take"_s : u"Keep Take"_s);
        QCOMPARE(m_view.rowText(Autosave, u"File Name"_s), u"take"_s);
    }
}

/** A camera whose drive saves by itself, in a mode that it was set to before. */
q4sim::Camera *TestDrivePanel::startWithMode(int mode)
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    const QByteArray body = QByteArray::number(mode);
    if (!simulated || simulated->answer("PUT", u"/ssd/autosave/mode"_s, body).status != 200)
        return nullptr;
    const auto shown = [&] { return m_view.camera()->ssdAutosaveModeValue()->variant().toInt() == mode; };
    return QTest::qWaitFor(shown) ? simulated : nullptr;
}

void TestDrivePanel::autosaveBitsKeepTheOthers()
{
    q4sim::Camera *simulated = startWithMode(7);
    QVERIFY(simulated);
    const QList<std::tuple<QString, QString, int>> steps = {
        {u"Save"_s, u"All Frames"_s, 5}, {u"After Save"_s, u"Keep Take"_s, 1},
        {u"Save"_s, u"Selection"_s, 3},  {u"After Save"_s, u"Delete Take"_s, 7},
        {u"Mode"_s, u"Disabled"_s, 6},   {u"Mode"_s, u"Enabled"_s, 7}};
    QByteArrayList sent;
    for (const auto &[label, entry, mode] : steps) {
        QVERIFY(m_view.choose(Autosave, label, entry));
        sent.append(QByteArray::number(mode));
        QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/ssd/autosave/mode"_s), sent);
        QCOMPARE(m_view.choice(Autosave, label), entry);
    }
    QTRY_COMPARE(simulated->value(u"ssd/autosave/mode"_s).toInt(), 7);
}

void TestDrivePanel::numbersAreLimited_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("present");
    QTest::addColumn<bool>("negative");
    QTest::addColumn<QString>("most");
    QTest::newRow("start") << u"Start Frame"_s << u"/ssd/autosave/start"_s << u"-100"_s << true
                           << u"2147483647"_s;
    QTest::newRow("count") << u"Frame Count"_s << u"/ssd/autosave/cnt"_s << u"200"_s << false
                           << u"4294967295"_s;
    QTest::newRow("sequence") << u"File Name Seq"_s << u"/ssd/name_seq"_s << u"1"_s << false
                              << u"4294967295"_s;
}

void TestDrivePanel::numbersAreLimited()
{
    QFETCH(const QString, label);
    QFETCH(const QString, path);
    QFETCH(const QString, present);
    QFETCH(const bool, negative);
    QFETCH(const QString, most);
    q4sim::Camera *simulated = startWithMode(3);
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.fieldText(Autosave, label), present);
    QCOMPARE(m_view.field(Autosave, label)->property("horizontalAlignment").toInt(), int(Qt::AlignRight));
    // Nothing of these is a number: the field goes back, and nothing is sent.
    for (const QString &text : {u""_s, u"abc"_s, u"-"_s, present}) {
        QVERIFY(m_view.type(Autosave, label, text));
        QCOMPARE(m_view.fieldText(Autosave, label), present);
        QVERIFY(!m_view.field(Autosave, label)->hasActiveFocus());
    }
    QVERIFY(m_view.type(Autosave, label, u"77"_s, Qt::Key_Escape));
    QCOMPARE(m_view.fieldText(Autosave, label), present);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::bodies(*simulated, "PUT", path), QByteArrayList());
    const QList<std::pair<QString, QString>> rows = {
        {u"42"_s, u"42"_s},
        {u"0"_s, u"0"_s},
        {u"9999999999"_s, most},
        {u"-7"_s, negative ? u"-7"_s : u"7"_s},
        {u"-9999999999"_s, negative ? u"-2147483648"_s : most},
        {u"12345678901"_s, negative ? u"1234567890"_s : u"1234567890"_s}};
    QByteArrayList sent;
    for (const auto &[text, number] : rows) {
        QVERIFY(m_view.type(Autosave, label, text));
        sent.append(number.toLatin1());
        QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", path), sent);
        QCOMPARE(m_view.fieldText(Autosave, label), number);
    }
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.fieldText(Autosave, label), u"1234567890"_s);
}

void TestDrivePanel::numberFieldShowsWhatTheCameraReports()
{
    q4sim::Camera *simulated = startWithMode(3);
    QVERIFY(simulated);
    QVERIFY(m_view.type(Autosave, u"Frame Count"_s, u"5"_s));
    simulated->forceValue(u"ssd/autosave/cnt"_s, 64);
    QTRY_COMPARE(m_view.fieldText(Autosave, u"Frame Count"_s), u"64"_s);
    simulated->forceValue(u"ssd/autosave/cnt"_s, 4294967295.0);
    QTRY_COMPARE(m_view.fieldText(Autosave, u"Frame Count"_s), u"4294967295"_s);
}

void TestDrivePanel::pollLeavesANumberThatIsBeingTyped()
{
    q4sim::Camera *simulated = startWithMode(3);
    QVERIFY(simulated);
    QQuickItem *field = m_view.field(Autosave, u"File Name Seq"_s);
    const auto startTyping = [&] {
        return ViewFixture::click(m_view.window(), QAccessible::queryAccessibleInterface(field));
    };
    QVERIFY(startTyping());
    QTest::keySequence(m_view.window(), QKeySequence::SelectAll);
    QTest::keyClick(m_view.window(), '8');
    QTest::keyClick(m_view.window(), '9');
    QCOMPARE(simulated->answer("PUT", u"/ssd/name_seq"_s, "5").status, 200);
    QTRY_COMPARE(m_view.camera()->ssdNameSeqValue()->variant().toInt(), 5);
    QCOMPARE(m_view.fieldText(Autosave, u"File Name Seq"_s), u"89"_s);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QTRY_COMPARE(simulated->value(u"ssd/name_seq"_s).toInt(), 89);
    // A field that was only visited sends nothing of what it showed before.
    QVERIFY(startTyping());
    QCOMPARE(simulated->answer("PUT", u"/ssd/name_seq"_s, "6").status, 200);
    QTRY_COMPARE(m_view.camera()->ssdNameSeqValue()->variant().toInt(), 6);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QTRY_COMPARE(m_view.fieldText(Autosave, u"File Name Seq"_s), u"6"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(simulated->value(u"ssd/name_seq"_s).toInt(), 6);
}

VIEW_TEST_MAIN(TestDrivePanel)
#include "tst_drive_panel.moc"
