#include "camera/camera.h"
#include "image/img_frame.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Acquisition = u"Acquisition"_s;
static const QString Lens = u"Lens & Shutter"_s;

/**
 * The boxes that take a typed value: what is sent of it, and that the field then shows what the camera has.
 * The simulated camera counts in 100 MHz, runs at 1000 frames/s (100000 clocks; 48400 to 2000000) and exposes
 * for 13 + k * 25 clocks, at least 113 and at most 99388 at that rate.
 */
class TestTypedSettings : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void typedTextIsSentAndTheFieldShowsTheTruth_data();
    void typedTextIsSentAndTheFieldShowsTheTruth();
    void textThatIsNoNumberIsRefused_data();
    void textThatIsNoNumberIsRefused();
    void entryOfTheListIsSent_data();
    void entryOfTheListIsSent();
    void leavingTheFieldEntersTheText_data();
    void leavingTheFieldEntersTheText();
    void fieldLeftAsItWasOrByEscapeSendsNothing_data();
    void fieldLeftAsItWasOrByEscapeSendsNothing();
    void presentValueTypedAgainSendsNothing();
    void fieldGivesUpFocusAfterUse();
    void listClosedWithoutAChoiceGivesUpFocus();
    void listMadeAnewLeavesWhatIsBeingTyped();
    void clockOfZeroTakesNoFrameRate();
    void editThatABoxLosesByBeingDisabledIsDropped();
    void rateOfTheSameTextIsSentExactly();

private:
    static void addBoxes();
    bool fieldHasFocus(const QString &section, const QString &label) const;

    ViewFixture m_view;
};

void TestTypedSettings::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

bool TestTypedSettings::fieldHasFocus(const QString &section, const QString &label) const
{
    return m_view.field(section, label)->hasActiveFocus();
}

namespace
{
struct Typed {
    QString text;
    QByteArray sent;
    QString shown;
};
} // namespace

static const QHash<QString, QList<Typed>> typedTexts = {
    {u"Frame Rate"_s,
     {{u"500"_s, "200000", u"500"_s},
      {u"1500"_s, "66667", u"1499"_s},
      {u"200000000"_s, "1", u"2066"_s},
      {u"2"_s, "50000000", u"50"_s},
      {u"999999999999"_s, "1", u"2066"_s},
      {u"0.001"_s, "2147483647", u"50"_s}}},
    {u"Exposure Time"_s,
     {{u"500"_s, "50000", u"499.880"_s},
      {u"1.5"_s, "150", u"1.380"_s},
      {u"0.5"_s, "50", u"1.130"_s},
      {u"20"_s, "2000", u"19.880"_s},
      {u"999999999999"_s, "2147483647", u"993.880"_s}}},
    // 8 GiB in four partitions of 640x480 + 32 bytes hold 6989 frames each.
    {u"Trigger Offset"_s,
     {{u"500"_s, "500", u"500"_s},
      {u"0"_s, "0", u"1"_s},
      {u"2"_s, "2", u"2"_s},
      {u"-5"_s, "-5", u"1"_s},
      {u"999999999"_s, "999999999", u"6989"_s}}},
    {u"F-stop"_s,
     {{u"5000"_s, "5000.000000", u"4"_s},
      {u"8"_s, "8.000000", u"8"_s},
      {u"3.3"_s, "3.300000", u"3.2"_s},
      {u"1.4"_s, "1.400000", u"2.8"_s}}}};

static QString pathOf(const QString &label)
{
    static const QHash<QString, QString> paths = {{u"Frame Rate"_s, u"/acq/fr_clks"_s},
                                                  {u"Exposure Time"_s, u"/acq/exp_clks"_s},
                                                  {u"Trigger Offset"_s, u"/acq/trig_offset"_s},
                                                  {u"F-stop"_s, u"/lens/fstop"_s}};
    return paths.value(label);
}

static QString sectionOf(const QString &label)
{
    return label == "F-stop"_L1 ? Lens : Acquisition;
}

void TestTypedSettings::typedTextIsSentAndTheFieldShowsTheTruth_data()
{
    addBoxes();
}

void TestTypedSettings::typedTextIsSentAndTheFieldShowsTheTruth()
{
    QFETCH(const QString, label);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    const QList<Typed> rows = typedTexts.value(label);
    for (const Typed &row : rows) {
        simulated->clearRequests();
        QVERIFY(m_view.type(sectionOf(label), label, row.text));
        QVERIFY(!fieldHasFocus(sectionOf(label), label));
        // The second poll after the write is the first that is believed.
        QVERIFY(m_view.waitForPolls(2));
        QTRY_COMPARE(m_view.fieldText(sectionOf(label), label) + " for "_L1 + row.text,
                     row.shown + " for "_L1 + row.text);
        QCOMPARE(ViewFixture::bodies(*simulated, "PUT", pathOf(label)), QByteArrayList{row.sent});
    }
}

void TestTypedSettings::textThatIsNoNumberIsRefused_data()
{
    addBoxes();
}

/** As a whole: it would be another number without the one character. */
void TestTypedSettings::textThatIsNoNumberIsRefused()
{
    QFETCH(const QString, label);
    QFETCH(const QString, present);
    QStringList refused = {u""_s, u"abc"_s, u"1e3"_s, u"1,5"_s, u"1.2.3"_s, u"-"_s, u"12345678901234"_s};
    refused += label == "Trigger Offset"_L1 ? u"1.5"_s : u"-5"_s;
    if (label != "Trigger Offset"_L1)
        refused += u"0"_s;
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (const QString &text : std::as_const(refused)) {
        QVERIFY(m_view.type(sectionOf(label), label, text, Qt::Key_Shift));
        QCOMPARE(m_view.fieldText(sectionOf(label), label), text);
        QTest::keyClick(m_view.window(), Qt::Key_Return);
        QTRY_COMPARE(m_view.fieldText(sectionOf(label), label), present);
        QVERIFY(!fieldHasFocus(sectionOf(label), label));
    }
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
}

void TestTypedSettings::addBoxes()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("present");
    QTest::addColumn<QString>("other");
    QTest::addColumn<QByteArray>("body");
    // The value at the start, and another entry of the list.
    QTest::newRow("rate") << u"Frame Rate"_s << u"1000"_s << u"2000"_s << QByteArray("50000");
    QTest::newRow("exposure") << u"Exposure Time"_s << u"499.880"_s << u"100.130"_s << QByteArray("10013");
    QTest::newRow("offset") << u"Trigger Offset"_s << u"3494"_s << u"6988"_s << QByteArray("6988");
    QTest::newRow("stop") << u"F-stop"_s << u"4"_s << u"5.6"_s << QByteArray("5.600000");
}

void TestTypedSettings::entryOfTheListIsSent_data()
{
    addBoxes();
}

static QString decorated(const QString &label, const QString &entry)
{
    static const QHash<QString, QString> units = {
        {u"Frame Rate"_s, u" fps"_s}, {u"Exposure Time"_s, u" µs"_s}, {u"Trigger Offset"_s, u" frames"_s}};
    return label == "F-stop"_L1 ? u" f/"_s + entry : entry + units.value(label);
}

void TestTypedSettings::entryOfTheListIsSent()
{
    QFETCH(const QString, label);
    QFETCH(const QString, other);
    QFETCH(const QByteArray, body);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.choose(sectionOf(label), label, decorated(label, other)));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", pathOf(label)), QByteArrayList{body});
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.fieldText(sectionOf(label), label), other);
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList{pathOf(label)});
    QVERIFY(!fieldHasFocus(sectionOf(label), label));
}

void TestTypedSettings::leavingTheFieldEntersTheText_data()
{
    addBoxes();
}

void TestTypedSettings::leavingTheFieldEntersTheText()
{
    QFETCH(const QString, label);
    QFETCH(const QString, other);
    QFETCH(const QByteArray, body);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    // Typed without the decimals of the list's texts.
    QVERIFY(m_view.type(sectionOf(label), label, other, Qt::Key_Tab));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", pathOf(label)), QByteArrayList{body});
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList{pathOf(label)});
    QCOMPARE(m_view.fieldText(sectionOf(label), label), other);
}

void TestTypedSettings::fieldLeftAsItWasOrByEscapeSendsNothing_data()
{
    addBoxes();
}

void TestTypedSettings::fieldLeftAsItWasOrByEscapeSendsNothing()
{
    QFETCH(const QString, label);
    QFETCH(const QString, present);
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    for (const Qt::Key end : {Qt::Key_Return, Qt::Key_Tab}) {
        QVERIFY(ViewFixture::click(
            m_view.window(), QAccessible::queryAccessibleInterface(m_view.field(sectionOf(label), label))));
        QVERIFY(fieldHasFocus(sectionOf(label), label));
        QTest::keyClick(m_view.window(), end);
        QVERIFY(!fieldHasFocus(sectionOf(label), label));
        QCOMPARE(m_view.fieldText(sectionOf(label), label), present);
    }
    QVERIFY(m_view.type(sectionOf(label), label, u"77"_s, Qt::Key_Escape));
    QCOMPARE(m_view.fieldText(sectionOf(label), label), present);
    QVERIFY(!fieldHasFocus(sectionOf(label), label));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
}

void TestTypedSettings::presentValueTypedAgainSendsNothing()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QVERIFY(m_view.type(Acquisition, u"Frame Rate"_s, u"1000"_s));
    QVERIFY(m_view.type(Acquisition, u"Exposure Time"_s, u"499.88"_s));
    QVERIFY(m_view.type(Acquisition, u"Trigger Offset"_s, u"3494"_s));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
    QCOMPARE(m_view.fieldText(Acquisition, u"Exposure Time"_s), u"499.880"_s);
}

void TestTypedSettings::fieldGivesUpFocusAfterUse()
{
    QVERIFY(m_view.startWithCamera());
    QTRY_VERIFY(!m_view.camera()->imgFrame()->image().isNull());
    QVERIFY(m_view.type(Acquisition, u"Trigger Offset"_s, u"20"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(m_view.camera()->imgFrame()->zoomScale(), 1.25);
}

void TestTypedSettings::listClosedWithoutAChoiceGivesUpFocus()
{
    QVERIFY(m_view.startWithCamera());
    QVERIFY(m_view.openList(Acquisition, u"Trigger Offset"_s));
    QTRY_VERIFY(m_view.shows(u"2 frames"_s, QAccessible::MenuItem));
    QTest::keyClick(m_view.window(), Qt::Key_Escape);
    QTRY_VERIFY(!m_view.shows(u"2 frames"_s, QAccessible::MenuItem));
    QVERIFY(!fieldHasFocus(Acquisition, u"Trigger Offset"_s));
}

void TestTypedSettings::listMadeAnewLeavesWhatIsBeingTyped()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    const QString box = u"Trigger Offset"_s;
    QQuickItem *field = m_view.field(Acquisition, box);
    QVERIFY(ViewFixture::click(m_view.window(), QAccessible::queryAccessibleInterface(field)));
    QTest::keySequence(m_view.window(), QKeySequence::SelectAll);
    QTest::keyClick(m_view.window(), '7');
    QTest::keyClick(m_view.window(), '8');
    simulated->forceValue(u"acq/trig_offset"_s, 123);
    QTRY_COMPARE(m_view.camera()->trigOffsetValue()->variant().toInt(), 123);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.fieldText(Acquisition, box), u"78"_s);
    QTest::keyClick(m_view.window(), Qt::Key_Return);
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/trig_offset"_s), QByteArrayList{"78"});
}

void TestTypedSettings::clockOfZeroTakesNoFrameRate()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    simulated->forceValue(u"acq/clk_freq"_s, 0);
    QTRY_COMPARE(m_view.camera()->clkFreqValue()->variant().toInt(), 0);
    QVERIFY(m_view.type(Acquisition, u"Frame Rate"_s, u"500"_s));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(simulated->requests("PUT", u"/acq/fr_clks"_s).size(), 0);
}

void TestTypedSettings::editThatABoxLosesByBeingDisabledIsDropped()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QQuickItem *field = m_view.field(Acquisition, u"Trigger Offset"_s);
    QVERIFY(ViewFixture::click(m_view.window(), QAccessible::queryAccessibleInterface(field)));
    QTest::keySequence(m_view.window(), QKeySequence::SelectAll);
    QTest::keyClick(m_view.window(), '7');
    QCOMPARE(m_view.fieldText(Acquisition, u"Trigger Offset"_s), u"7"_s);
    simulated->forceValue(u"acq/state"_s, 3);
    QTRY_VERIFY(!field->isEnabled());
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/trig_offset"_s), QByteArrayList());
    QCOMPARE(m_view.fieldText(Acquisition, u"Trigger Offset"_s),
             QString::number(simulated->value(u"acq/trig_offset"_s).toInt()));
}

void TestTypedSettings::rateOfTheSameTextIsSentExactly()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    // 66667 clocks show as 1499, which is 66711 clocks.
    QCOMPARE(simulated->answer("PUT", u"/acq/fr_clks"_s, "66667").status, 200);
    QTRY_COMPARE(m_view.fieldText(Acquisition, u"Frame Rate"_s), u"1499"_s);
    QVERIFY(m_view.type(Acquisition, u"Frame Rate"_s, u"1499"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/acq/fr_clks"_s), QByteArrayList{"66711"});
}

VIEW_TEST_MAIN(TestTypedSettings)
#include "tst_typed_settings.moc"
