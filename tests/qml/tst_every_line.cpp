#include "app/vesk_app.h"
#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Each electrical line has controls of its own, and each section folds by itself. */
class TestEveryLine : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void controlsWriteTheirOwnLine_data();
    void controlsWriteTheirOwnLine();
    void arrowsStepUpAndDown();
    void headerFolds();

private:
    q4sim::Camera *startAtRest(const QString &token);

    ViewFixture m_view;
};

/** A camera one of whose lines is off and has no times; all sections are unfolded. */
q4sim::Camera *TestEveryLine::startAtRest(const QString &token)
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    if (!simulated)
        return nullptr;
    for (const QString &key : {u"mode"_s, u"polarity"_s, u"delay"_s, u"min"_s, u"max"_s, u"filter"_s}) {
        if (simulated->answer("PUT", u"/io/%1/%2"_s.arg(token, key), "0").status != 200)
            return nullptr;
    }
    if (token != "trigger"_L1 &&
        simulated->answer("PUT", u"/io/%1/signal"_s.arg(token), "\"\"").status != 200)
        return nullptr;
    return m_view.waitForPolls(2) ? simulated : nullptr;
}

void TestEveryLine::controlsWriteTheirOwnLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("token");
    QTest::newRow("trigger") << u"Trigger I/O"_s << u"trigger"_s;
    for (int i = 1; i <= 6; ++i)
        QTest::addRow("line %d", i) << u"I/O %1"_s.arg(i) << u"io%1"_s.arg(i);
}

void TestEveryLine::controlsWriteTheirOwnLine()
{
    QFETCH(const QString, line);
    QFETCH(const QString, token);
    q4sim::Camera *simulated = startAtRest(token);
    QVERIFY(simulated);
    const auto held = [&](const QString &key) { return simulated->value(u"io/%1/%2"_s.arg(token, key)); };
    if (token != "trigger"_L1) {
        QTRY_COMPARE(m_view.choice(line, u"Signal"_s), u"Disabled"_s);
        QVERIFY(m_view.choose(line, u"Signal"_s, u"Trigger"_s));
    }
    QTRY_COMPARE(held(u"signal"_s).toString(), u"trig"_s);
    QTRY_COMPARE(m_view.choice(line, u"Mode"_s), u"Disabled"_s);
    QVERIFY(m_view.choose(line, u"Mode"_s, u"Input"_s));
    QTRY_COMPARE(held(u"mode"_s).toInt(), 1);
    QVERIFY(m_view.choose(line, u"Polarity"_s, u"Falling (Trailing)"_s));
    QTRY_COMPARE(held(u"polarity"_s).toInt(), 2);
    const QList<std::pair<QString, QString>> fields = {{u"Delay"_s, u"delay"_s},
                                                       {u"Min. Width"_s, u"min"_s},
                                                       {u"Max. Width"_s, u"max"_s},
                                                       {u"Filter"_s, u"filter"_s}};
    int clocks = 100;
    for (const auto &[label, key] : fields) {
        QTRY_COMPARE(m_view.fieldText(line, label), u"Disabled"_s);
        QVERIFY(m_view.type(line, label, QString::number(++clocks)));
        QTRY_COMPARE(held(key).toInt(), clocks);
    }
    // Nothing of another line was touched.
    const QStringList paths = ViewFixture::writtenPaths(*simulated);
    for (const QString &path : paths)
        QVERIFY2(path.startsWith(u"/io/%1/"_s.arg(token)), qPrintable(path));
    QCOMPARE(paths.size(), token == "trigger"_L1 ? 6 : 7);
}

void TestEveryLine::arrowsStepUpAndDown()
{
    q4sim::Camera *simulated = startAtRest(u"trigger"_s);
    QVERIFY(simulated);
    const QString line = u"Trigger I/O"_s;
    QVERIFY(m_view.choose(line, u"Mode"_s, u"Input"_s));
    const QList<std::pair<QString, QString>> fields = {{u"Delay"_s, u"delay"_s},
                                                       {u"Min. Width"_s, u"min"_s},
                                                       {u"Max. Width"_s, u"max"_s},
                                                       {u"Filter"_s, u"filter"_s}};
    for (const auto &[label, key] : fields) {
        const auto held = [&] { return simulated->value(u"io/trigger/"_s + key).toInt(); };
        QTRY_COMPARE(m_view.fieldText(line, label), u"Disabled"_s);
        QVERIFY(m_view.type(line, label, u"2 us"_s));
        QTRY_COMPARE(held(), 250);
        QVERIFY(m_view.clickArrow(line, label, true));
        QTRY_COMPARE(held(), 375);
        QVERIFY(m_view.clickArrow(line, label, false));
        QTRY_COMPARE(held(), 250);
        QVERIFY(m_view.clickArrow(line, label, false));
        QTRY_COMPARE(held(), 125);
        QCOMPARE(m_view.fieldText(line, label), u"1.000 us"_s);
        // Below nothing there is nothing.
        QVERIFY(m_view.clickArrow(line, label, false));
        QVERIFY(m_view.clickArrow(line, label, false));
        QTRY_COMPARE(held(), 0);
        QCOMPARE(m_view.fieldText(line, label), u"Disabled"_s);
    }
}

void TestEveryLine::headerFolds()
{
    QVERIFY(m_view.startWithCamera());
    struct Row {
        QString section;
        QString label;
        QString key;
        bool unfolded;
    };
    QList<Row> rows = {{u"Trigger I/O"_s, u"Signal"_s, u"trigger"_s, false},
                       {u"Video"_s, u"Format"_s, u"video"_s, true}};
    for (int i = 1; i <= 6; ++i)
        rows.append({u"I/O %1"_s.arg(i), u"Signal"_s, u"io%1"_s.arg(i), false});
    const auto isUnfolded = [this](const Row &row) { return m_view.inSection(row.section, row.label); };
    for (const Row &row : rows) {
        QTRY_COMPARE(isUnfolded(row) != nullptr, row.unfolded);
        QVERIFY(ViewFixture::click(m_view.window(), m_view.element(row.section, QAccessible::Button)));
        QTRY_COMPARE(isUnfolded(row) != nullptr, !row.unfolded);
    }
    m_view.close();
    for (const Row &row : rows)
        QCOMPARE(VeskApp::instance()->setting(u"cameras/Q4-00001/%1_pane_expanded"_s.arg(row.key)).toBool(),
                 !row.unfolded);
}

VIEW_TEST_MAIN(TestEveryLine)
#include "tst_every_line.moc"
