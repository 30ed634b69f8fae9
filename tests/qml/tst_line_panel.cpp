#include "app/vesk_app.h"
#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The sections of the electrical lines. */
class TestLinePanel : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void everyLineHasASection();
    void choicesAreWritten();
    void modesShrinkWithTheSignal();
    void polarityShowsAgainAfterASignalWithout();
    void fieldsFollowSignalAndMode();
    void typedTimeIsWrittenInClocks();
    void typedTimeRefuses();
    void arrowsStepInTheUnit();
    void unitsAreKeptByLineAndField();
    void unitThatIsNoneIsShownInClocks();
    void unitBeyondTheRangeLeavesTheValue();
    void menuKeyOffersTheUnits();
    void anotherClockRenewsTheText();
    void spinBoxGivesUpFocus();

private:
    q4sim::Camera *startWith(const QList<std::pair<QString, QByteArray>> &values);
    QStringList rows(const QString &line) const;
    QStringList entries(const QString &line, const QString &label);
    bool pickUnit(const QString &line, const QString &label, const QString &unit);

    ViewFixture m_view;
};

void TestLinePanel::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

/** A camera whose lines were set up before, as paths below "io" and bodies; all sections are unfolded. */
q4sim::Camera *TestLinePanel::startWith(const QList<std::pair<QString, QByteArray>> &values)
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    if (!simulated)
        return nullptr;
    for (const auto &[path, body] : values) {
        if (simulated->answer("PUT", u"/io/"_s + path, body).status != 200)
            return nullptr;
    }
    return m_view.waitForPolls(2) ? simulated : nullptr;
}

QStringList TestLinePanel::rows(const QString &line) const
{
    QStringList found;
    for (const QString &label :
         {u"Signal"_s, u"Mode"_s, u"Polarity"_s, u"Delay"_s, u"Min. Width"_s, u"Max. Width"_s, u"Filter"_s}) {
        if (m_view.inSection(line, label))
            found.append(label);
    }
    return found;
}

/** What a box of a line offers, top to bottom. */
QStringList TestLinePanel::entries(const QString &line, const QString &label)
{
    QAccessibleInterface *box = m_view.inSection(line, label, QAccessible::ComboBox);
    const int count = box ? box->object()->property("count").toInt() : 0;
    QStringList found;
    for (int i = 0; i < count; ++i) {
        QString text;
        QMetaObject::invokeMethod(box->object(), "textAt", Q_RETURN_ARG(QString, text), Q_ARG(int, i));
        found.append(text);
    }
    return found;
}

bool TestLinePanel::pickUnit(const QString &line, const QString &label, const QString &unit)
{
    QAccessibleInterface *box = m_view.inSection(line, label, QAccessible::SpinBox);
    return box && ViewFixture::click(m_view.window(), box, Qt::RightButton) && m_view.click(unit);
}

void TestLinePanel::everyLineHasASection()
{
    QVERIFY(m_view.startUnfolded());
    const QList<std::pair<QString, QString>> lines = {
        {u"Trigger I/O"_s, u"Enabled"_s}, {u"I/O 1"_s, u"Frame Sync"_s}, {u"I/O 2"_s, u"Record"_s},
        {u"I/O 3"_s, u"Ready"_s},         {u"I/O 4"_s, u"Event 1"_s},    {u"I/O 5"_s, u"IRIG"_s},
        {u"I/O 6"_s, u"Disabled"_s}};
    for (const auto &[line, signal] : lines)
        QTRY_COMPARE(m_view.choice(line, u"Signal"_s), signal);
    QCOMPARE(entries(u"Trigger I/O"_s, u"Signal"_s), (QStringList{u"Disabled"_s, u"Enabled"_s}));
    QCOMPARE(entries(u"I/O 6"_s, u"Signal"_s),
             (QStringList{u"Disabled"_s, u"Event 1"_s, u"Event 2"_s, u"Frame Sync"_s, u"IRIG"_s, u"Ready"_s,
                          u"Record"_s, u"Shutter"_s, u"Trigger"_s}));
}

void TestLinePanel::choicesAreWritten()
{
    q4sim::Camera *simulated = startWith({});
    QVERIFY(simulated);
    const QString line = u"I/O 6"_s;
    QVERIFY(m_view.choose(line, u"Signal"_s, u"Trigger"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/io/io6/signal"_s), QByteArrayList{"\"trig\""});
    QCOMPARE(m_view.choice(line, u"Mode"_s), u"Disabled"_s);
    QVERIFY(m_view.choose(line, u"Mode"_s, u"Input"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/io/io6/mode"_s), QByteArrayList{"1"});
    QCOMPARE(entries(line, u"Polarity"_s), (QStringList{u"Rising Edge"_s, u"Falling Edge"_s,
                                                        u"Falling (Trailing)"_s, u"Rising (Trailing)"_s}));
    QVERIFY(m_view.choose(line, u"Polarity"_s, u"Rising (Trailing)"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/io/io6/polarity"_s), QByteArrayList{"3"});
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.choice(line, u"Signal"_s), u"Trigger"_s);
    QCOMPARE(m_view.choice(line, u"Mode"_s), u"Input"_s);
    QCOMPARE(m_view.choice(line, u"Polarity"_s), u"Rising (Trailing)"_s);
    QVERIFY(m_view.choose(line, u"Mode"_s, u"OD Bidirectional"_s));
    QCOMPARE(entries(line, u"Polarity"_s), (QStringList{u"Rising Edge"_s, u"Falling Edge"_s}));
    QVERIFY(m_view.choose(line, u"Signal"_s, u"Disabled"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/io/io6/signal"_s),
                 (QByteArrayList{"\"trig\"", "\"\""}));
    QTRY_COMPARE(rows(line), QStringList{u"Signal"_s});
}

void TestLinePanel::modesShrinkWithTheSignal()
{
    QVERIFY(startWith({{u"io4/mode"_s, "16"}}));
    const QString line = u"I/O 4"_s;
    QTRY_COMPARE(m_view.choice(line, u"Mode"_s), u"OD Bidirectional"_s);
    QCOMPARE(entries(line, u"Mode"_s), (QStringList{u"Disabled"_s, u"Input"_s, u"Input w/ Pull-up"_s,
                                                    u"Output"_s, u"OD Output"_s, u"OD Bidirectional"_s}));
    QVERIFY(m_view.choose(line, u"Signal"_s, u"IRIG"_s));
    QCOMPARE(entries(line, u"Mode"_s), (QStringList{u"Disabled"_s, u"Input"_s, u"Output"_s}));
    // The camera still holds a mode that IRIG does not have.
    QCOMPARE(m_view.choice(line, u"Mode"_s), QString());
    QCOMPARE(rows(line), (QStringList{u"Signal"_s, u"Mode"_s}));
    QVERIFY(m_view.choose(line, u"Mode"_s, u"Output"_s));
    QCOMPARE(m_view.choice(line, u"Mode"_s), u"Output"_s);
    QVERIFY(m_view.choose(line, u"Signal"_s, u"Shutter"_s));
    QCOMPARE(entries(line, u"Mode"_s), (QStringList{u"Disabled"_s, u"Output"_s}));
    QCOMPARE(m_view.choice(line, u"Mode"_s), u"Output"_s);
}

void TestLinePanel::polarityShowsAgainAfterASignalWithout()
{
    QVERIFY(startWith({}));
    const QString line = u"I/O 4"_s;
    QTRY_COMPARE(m_view.choice(line, u"Polarity"_s), u"Active High"_s);
    QVERIFY(m_view.choose(line, u"Signal"_s, u"IRIG"_s));
    QTRY_VERIFY(!m_view.inSection(line, u"Polarity"_s));
    QVERIFY(m_view.choose(line, u"Signal"_s, u"Trigger"_s));
    QTRY_COMPARE(m_view.choice(line, u"Polarity"_s), u"Rising Edge"_s);
}

void TestLinePanel::fieldsFollowSignalAndMode()
{
    q4sim::Camera *simulated = startWith({});
    QVERIFY(simulated);
    const QString line = u"I/O 1"_s;
    const QStringList choices = {u"Signal"_s, u"Mode"_s, u"Polarity"_s};
    QTRY_COMPARE(rows(line), choices + QStringList({u"Delay"_s, u"Min. Width"_s, u"Max. Width"_s}));
    simulated->forceValue(u"io/io1/mode"_s, 1);
    QTRY_COMPARE(rows(line),
                 choices + QStringList({u"Delay"_s, u"Min. Width"_s, u"Max. Width"_s, u"Filter"_s}));
    simulated->forceValue(u"io/io1/signal"_s, u"trig"_s);
    simulated->forceValue(u"io/io1/mode"_s, 16);
    QTRY_COMPARE(rows(line), choices + QStringList({u"Min. Width"_s, u"Max. Width"_s, u"Filter"_s}));
    simulated->forceValue(u"io/io1/mode"_s, 0);
    QTRY_COMPARE(rows(line), choices);
    simulated->forceValue(u"io/io1/signal"_s, u"unknown"_s);
    QTRY_COMPARE(rows(line), QStringList{u"Signal"_s});
    QCOMPARE(m_view.choice(line, u"Signal"_s), QString());
}

void TestLinePanel::typedTimeIsWrittenInClocks()
{
    q4sim::Camera *simulated = startWith({{u"io4/signal"_s, "\"trig\""}});
    QVERIFY(simulated);
    struct Row {
        QString label;
        QString text;
        int clocks;
        QString shown;
    };
    // The line counts in 125 MHz: 8 ns a clock.
    const QList<Row> rows = {{u"Delay"_s, u"1000"_s, 1000, u"1000 clks"_s},
                             {u"Delay"_s, u"2.5 us"_s, 313, u"2.504 us"_s},
                             {u"Delay"_s, u"2"_s, 250, u"2.000 us"_s},
                             {u"Delay"_s, u"1,000 clks"_s, 1000, u"1000 clks"_s},
                             {u"Delay"_s, u"0"_s, 0, u"Disabled"_s},
                             {u"Min. Width"_s, u"100ns"_s, 13, u"104 ns"_s},
                             {u"Min. Width"_s, u"3 µs"_s, 375, u"3.000 us"_s},
                             {u"Max. Width"_s, u"1.5 ms"_s, 187500, u"1.500000 ms"_s},
                             {u"Max. Width"_s, u"300000000 clk"_s, 268435455, u"268435455 clks"_s},
                             {u"Filter"_s, u"262144"_s, 262143, u"262143 clks"_s},
                             {u"Filter"_s, u"9999 ms"_s, 262143, u"2.097144 ms"_s},
                             {u"Filter"_s, u"4 clks"_s, 4, u"4 clks"_s}};
    const QHash<QString, QString> keys = {{u"Delay"_s, u"delay"_s},
                                          {u"Min. Width"_s, u"min"_s},
                                          {u"Max. Width"_s, u"max"_s},
                                          {u"Filter"_s, u"filter"_s}};
    for (const Row &row : rows) {
        QVERIFY(m_view.type(u"I/O 4"_s, row.label, row.text));
        QTRY_COMPARE(simulated->value(u"io/io4/"_s + keys.value(row.label)).toInt(), row.clocks);
        QCOMPARE(m_view.fieldText(u"I/O 4"_s, row.label), row.shown);
    }
    // 9999 ms was more than the present maximum, so that only its unit was new.
    QCOMPARE(ViewFixture::bodies(*simulated, "PUT", u"/io/io4/filter"_s), (QByteArrayList{"262143", "4"}));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Max. Width"_s), u"268435455 clks"_s);
}

void TestLinePanel::typedTimeRefuses()
{
    q4sim::Camera *simulated = startWith({{u"io4/delay"_s, "1000"}});
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"1000 clks"_s);
    for (const QString &text : {u""_s, u"fast"_s, u"5 s"_s, u"1.2.3 us"_s, u"us"_s, u"1e3x"_s, u"0x10"_s,
                                u"1e3"_s, u"Infinity"_s, u"1,5 ms"_s, u"1,50 us"_s}) {
        QVERIFY(m_view.type(u"I/O 4"_s, u"Delay"_s, text));
        QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"1000 clks"_s);
    }
    QVERIFY(m_view.type(u"I/O 4"_s, u"Delay"_s, u"77"_s, Qt::Key_Escape));
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"1000 clks"_s);
    QVERIFY(!m_view.field(u"I/O 4"_s, u"Delay"_s)->hasActiveFocus());
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
    // After Escape the field goes on following the camera.
    QCOMPARE(simulated->answer("PUT", u"/io/io4/delay"_s, "2000").status, 200);
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"2000 clks"_s);
}

void TestLinePanel::arrowsStepInTheUnit()
{
    q4sim::Camera *simulated = startWith({{u"io4/delay"_s, "1000"}});
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"1000 clks"_s);
    const QList<std::pair<QString, int>> steps = {
        {u"Clocks"_s, 1}, {u"Nanoseconds"_s, 1}, {u"Microseconds"_s, 125}, {u"Milliseconds"_s, 125000}};
    int clocks = 1000;
    for (const auto &[unit, step] : steps) {
        QVERIFY(pickUnit(u"I/O 4"_s, u"Delay"_s, unit));
        QTRY_VERIFY(!m_view.shows(unit));
        QAccessibleInterface *box = m_view.inSection(u"I/O 4"_s, u"Delay"_s, QAccessible::SpinBox);
        ViewFixture::settle(m_view.window());
        const QPoint centre = ViewFixture::centre(m_view.window(), box);
        const QPoint up(centre.x() + box->rect().width() / 2 - 8, centre.y() - box->rect().height() / 4);
        QTest::mouseClick(m_view.window(), Qt::LeftButton, {}, up);
        clocks += step;
        QTRY_COMPARE(simulated->value(u"io/io4/delay"_s).toInt(), clocks);
        QVERIFY(!m_view.field(u"I/O 4"_s, u"Delay"_s)->hasActiveFocus());
    }
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"1.009016 ms"_s);
}

void TestLinePanel::unitsAreKeptByLineAndField()
{
    const QList<std::pair<QString, QByteArray>> values = {{u"io4/signal"_s, "\"trig\""},
                                                          {u"io4/delay"_s, "1000"},
                                                          {u"io4/min"_s, "1000"},
                                                          {u"io4/max"_s, "1000"},
                                                          {u"trigger/delay"_s, "1000"}};
    q4sim::Camera *simulated = startWith(values);
    QVERIFY(simulated);
    const auto kept = [](const QString &key) {
        return VeskApp::instance()->setting(u"cameras/Q4-00001/"_s + key).toInt();
    };
    QVERIFY(pickUnit(u"I/O 4"_s, u"Delay"_s, u"Nanoseconds"_s));
    QTRY_COMPARE(kept(u"io4_delay_units"_s), 1);
    QVERIFY(pickUnit(u"I/O 4"_s, u"Min. Width"_s, u"Microseconds"_s));
    QTRY_COMPARE(kept(u"io4_min_units"_s), 2);
    QVERIFY(pickUnit(u"I/O 4"_s, u"Max. Width"_s, u"Milliseconds"_s));
    QTRY_COMPARE(kept(u"io4_max_units"_s), 3);
    QVERIFY(m_view.type(u"I/O 4"_s, u"Filter"_s, u"2 us"_s));
    QTRY_COMPARE(kept(u"io4_filter_units"_s), 2);
    QCOMPARE(m_view.fieldText(u"Trigger I/O"_s, u"Delay"_s), u"1000 clks"_s);
    // Only the typed time was sent: a unit is a matter of display.
    QTRY_COMPARE(ViewFixture::writtenPaths(*simulated), QStringList{u"/io/io4/filter"_s});
    m_view.close();

    simulated = startWith(values);
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"8000 ns"_s);
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Min. Width"_s), u"8.000 us"_s);
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Max. Width"_s), u"0.008000 ms"_s);
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Filter"_s), u"1.000 us"_s);
    QCOMPARE(m_view.fieldText(u"Trigger I/O"_s, u"Delay"_s), u"1000 clks"_s);
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList());
}

void TestLinePanel::unitThatIsNoneIsShownInClocks()
{
    VeskApp::instance()->setSetting(u"cameras/Q4-00001/io4_delay_units"_s, 7);
    VeskApp::instance()->setSetting(u"cameras/Q4-00001/io4_min_units"_s, u"x"_s);
    QVERIFY(startWith({{u"io4/delay"_s, "1000"}, {u"io4/min"_s, "1000"}}));
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"1000 clks"_s);
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Min. Width"_s), u"1000 clks"_s);
}

void TestLinePanel::unitBeyondTheRangeLeavesTheValue()
{
    // A step of 1 ms is 150000 clocks: more than lie below this value, and more than the filter has above it.
    q4sim::Camera *simulated = startWith({{u"io4/signal"_s, "\"fsync\""}, {u"io4/filter"_s, "120000"}});
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Filter"_s), u"120000 clks"_s);
    simulated->forceValue(u"acq/clk_freq"_s, 150000000);
    QTRY_COMPARE(m_view.camera()->clkFreqValue()->variant().toInt(), 150000000);
    // A line reads the clock with its next signal.
    QVERIFY(m_view.choose(u"I/O 4"_s, u"Signal"_s, u"Trigger"_s));
    QVERIFY(m_view.choose(u"I/O 4"_s, u"Signal"_s, u"Frame Sync"_s));
    QVERIFY(pickUnit(u"I/O 4"_s, u"Filter"_s, u"Milliseconds"_s));
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Filter"_s), u"0.800000 ms"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::bodies(*simulated, "PUT", u"/io/io4/filter"_s), QByteArrayList());
}

void TestLinePanel::menuKeyOffersTheUnits()
{
    QVERIFY(startWith({{u"io4/delay"_s, "1000"}}));
    QVERIFY(m_view.clickIn(u"I/O 4"_s, u"Delay"_s));
    QTest::keyClick(m_view.window(), Qt::Key_Menu);
    QTRY_VERIFY(m_view.shows(u"Milliseconds"_s));
    QVERIFY(m_view.click(u"Milliseconds"_s));
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"0.008000 ms"_s);
}

void TestLinePanel::anotherClockRenewsTheText()
{
    q4sim::Camera *simulated = startWith({{u"io4/delay"_s, "1000"}, {u"io4/max"_s, "268435455"}});
    QVERIFY(simulated);
    QVERIFY(pickUnit(u"I/O 4"_s, u"Delay"_s, u"Microseconds"_s));
    QVERIFY(pickUnit(u"I/O 4"_s, u"Max. Width"_s, u"Microseconds"_s));
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"8.000 us"_s);
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Max. Width"_s), u"2147483.640 us"_s);
    // Frame Sync counts in the camera's clock, 100 MHz.
    QVERIFY(m_view.choose(u"I/O 4"_s, u"Signal"_s, u"Frame Sync"_s));
    QTRY_COMPARE(m_view.fieldText(u"I/O 4"_s, u"Delay"_s), u"10.000 us"_s);
    QCOMPARE(m_view.fieldText(u"I/O 4"_s, u"Max. Width"_s), u"2684354.550 us"_s);
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(ViewFixture::writtenPaths(*simulated), QStringList{u"/io/io4/signal"_s});
}

void TestLinePanel::spinBoxGivesUpFocus()
{
    QVERIFY(startWith({}));
    QVERIFY(m_view.type(u"I/O 4"_s, u"Delay"_s, u"20"_s));
    QVERIFY(!m_view.field(u"I/O 4"_s, u"Delay"_s)->hasActiveFocus());
    QVERIFY(m_view.choose(u"I/O 4"_s, u"Mode"_s, u"Input w/ Pull-up"_s));
    QVERIFY(
        !qobject_cast<QQuickItem *>(m_view.inSection(u"I/O 4"_s, u"Mode"_s, QAccessible::ComboBox)->object())
             ->hasActiveFocus());
}

VIEW_TEST_MAIN(TestLinePanel)
#include "tst_line_panel.moc"
