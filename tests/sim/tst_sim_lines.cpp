#include "camera_fixture.h"

#include <array>

using namespace q4sim;

namespace
{

constexpr std::array lines = {"trigger", "io1", "io2", "io3", "io4", "io5", "io6"};

} // namespace

class TestSimLines : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_fix.start(m_fix.config()); }
    void everyKeyOfEveryLineIsStored_data();
    void everyKeyOfEveryLineIsStored();
    void everySignalIsStored_data();
    void everySignalIsStored();
    void whatNoLineHoldsIsRefused_data();
    void whatNoLineHoldsIsRefused();
    void signalLeavesModeAndPolarityAlone();

private:
    CameraFixture m_fix{QStringLiteral("127.0.1.72")};
};

void TestSimLines::everyKeyOfEveryLineIsStored_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QList<int>>("numbers");
    for (const char *line : lines) {
        const auto row = [line](const char *key, const QList<int> &numbers) {
            const QString path =
                QStringLiteral("io/%1/%2").arg(QLatin1StringView(line), QLatin1StringView(key));
            QTest::newRow(qPrintable(path)) << path << numbers;
        };
        row("mode", {1, 2, 4, 8, 16, 0});
        row("polarity", {1, 2, 3, 0});
        row("filter", {1, 262143, 0});
        row("delay", {1, 268435455, 0});
        row("min", {1, 268435455, 0});
        row("max", {1, 268435455, 0});
    }
}

void TestSimLines::everyKeyOfEveryLineIsStored()
{
    QFETCH(QString, path);
    QFETCH(QList<int>, numbers);
    for (int number : numbers) {
        QJsonObject expected = m_fix.camera().status()["io"].toObject();
        QCOMPARE(m_fix.client().put(u'/' + path, QByteArray::number(number)), 200);
        QCOMPARE(m_fix.camera().value(path).toInt(-1), number);
        // Nothing else of any line has moved.
        QJsonObject line = expected[path.section(u'/', 1, 1)].toObject();
        line[path.section(u'/', 2, 2)] = number;
        expected[path.section(u'/', 1, 1)] = line;
        QCOMPARE(m_fix.camera().status()["io"].toObject(), expected);
    }
}

void TestSimLines::everySignalIsStored_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("taken");
    QTest::newRow("trigger") << "trigger" << QStringList{"", "trig"};
    const QStringList user = {"", "trig", "ready", "rec", "irig", "event1", "event2", "fsync", "shtr"};
    for (const char *line : {"io1", "io2", "io3", "io4", "io5", "io6"})
        QTest::newRow(line) << QString::fromLatin1(line) << user;
}

void TestSimLines::everySignalIsStored()
{
    QFETCH(QString, line);
    QFETCH(QStringList, taken);
    const QString path = QStringLiteral("io/%1/signal").arg(line);
    const QStringList all = {"",       "trig",  "ready", "rec",   "irig", "event1",
                             "event2", "fsync", "shtr",  "clock", "Trig", "trig "};
    for (const QString &signal : all) {
        const QString before = m_fix.camera().value(path).toString();
        const bool good = taken.contains(signal);
        QCOMPARE(m_fix.client().put(u'/' + path, '"' + signal.toUtf8() + '"'), good ? 200 : 400);
        QCOMPARE(m_fix.camera().value(path).toString(), good ? signal : before);
    }
}

void TestSimLines::whatNoLineHoldsIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const auto row = [](const char *path, const char *body, int status) {
        QTest::addRow("%s %s", path, body) << QString::fromLatin1(path) << QByteArray(body) << status;
    };
    for (const char *path : {"/io/io7/mode", "/io/io0/mode", "/io/trig/mode", "/io/io1/width", "/io/io1"})
        row(path, "1", 404);
    for (const char *body : {"3", "5", "6", "7", "12", "32", "-1", "1.5", "\"1\"", "true", "", "null", "[1]"})
        row("/io/io1/mode", body, 400);
    for (const char *body : {"4", "-1", "0.5", "\"0\"", "false"})
        row("/io/trigger/polarity", body, 400);
    for (const char *body : {"262144", "-1", "0.1", "\"\"", "1e9"})
        row("/io/io2/filter", body, 400);
    for (const char *path : {"/io/io3/delay", "/io/io4/min", "/io/io5/max"}) {
        for (const char *body : {"268435456", "-1", "0.1", "\"10\"", "{}"})
            row(path, body, 400);
    }
    for (const char *body : {"1", "true", "trig", "\"trig", "null"})
        row("/io/io6/signal", body, 400);
}

void TestSimLines::whatNoLineHoldsIsRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    const QJsonObject before = m_fix.camera().status();
    QCOMPARE(m_fix.client().put(path, body), status);
    QCOMPARE(m_fix.camera().status(), before);
}

void TestSimLines::signalLeavesModeAndPolarityAlone()
{
    QCOMPARE(m_fix.put("/io/io1/signal", "\"trig\""), 200);
    QCOMPARE(m_fix.put("/io/io1/mode", "16"), 200);
    QCOMPARE(m_fix.put("/io/io1/polarity", "3"), 200);
    QCOMPARE(m_fix.put("/io/io1/signal", "\"irig\""), 200);
    QCOMPARE(m_fix.number("io/io1/mode"), 16);
    QCOMPARE(m_fix.number("io/io1/polarity"), 3);
}

QTEST_GUILESS_MAIN(TestSimLines)
#include "tst_sim_lines.moc"
