#include "camera_fixture.h"

#include <QJsonArray>

using namespace q4sim;
using namespace std::chrono_literals;

class TestSimDrive : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void insertedDriveIsMountedInSteps_data();
    void insertedDriveIsMountedInSteps();
    void driveOfTheStartIsMountedAlready_data();
    void driveOfTheStartIsMountedAlready();
    void ejectedDriveGoesThroughItsStates();
    void blankDriveIsEjectedAndFormatted();
    void brokenDriveTakesNothing();
    void autosaveShowsItsProgress();
    void autosaveNamesItsRecordings();
    void autosaveOfASelection_data();
    void autosaveOfASelection();
    void autosaveDeletesTheTakeAtItsEnd();
    void writingDriveIsNeitherEjectedNorFormatted();
    void pulledDriveFreesTheTake();
    void noAutosaveWithoutModeFeatureOrDrive_data();
    void noAutosaveWithoutModeFeatureOrDrive();
    void autosaveValuesAreRefused_data();
    void autosaveValuesAreRefused();

private:
    QStringList names();
    void recordTake();

    CameraFixture m_fix{QStringLiteral("127.0.1.71")};
};

void TestSimDrive::init()
{
    // 1000 frames a second; a frame is 32 bytes and 320 * 240 pixels, 76832 in all.
    Config config = m_fix.config();
    config.resolutions = QStringList{"320x240"};
    config.memoryBytes = 4LL << 30;
    m_fix.start(config);
    QCOMPARE(m_fix.put("/acq/trig_offset", "10000"), 200);
    QCOMPARE(m_fix.put("/ssd/autosave/mode", "1"), 200);
    QCOMPARE(m_fix.put("/ssd/autosave/name", "\"run_<seq>\""), 200);
}

QStringList TestSimDrive::names()
{
    QStringList names;
    const Reply reply = m_fix.client().send("POST", "/ssd-ls", "{\"long\": 1}");
    const QJsonArray list = reply.json()["ssd-ls"].toArray();
    for (const QJsonValue &entry : list)
        names.append(entry["name"].toString());
    return names;
}

// Frames 0 to 9999 of the trigger and none before: 768320000 bytes.
void TestSimDrive::recordTake()
{
    QCOMPARE(m_fix.post("/rec"), 200);
    QCOMPARE(m_fix.post("/trig"), 200);
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("acq/state"), 1);
}

void TestSimDrive::insertedDriveIsMountedInSteps_data()
{
    QTest::addColumn<QString>("deed");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("name");
    QTest::newRow("formatted") << "insert" << 3 << "Q4SSD";
    QTest::newRow("blank") << "insert-blank" << 8 << "";
    QTest::newRow("broken") << "insert-broken" << 7 << "";
}

void TestSimDrive::insertedDriveIsMountedInSteps()
{
    QFETCH(QString, deed);
    QFETCH(int, state);
    QFETCH(QString, name);
    QCOMPARE(m_fix.camera().operate({{"ssd", "remove"}}), QString());
    QCOMPARE(m_fix.number("ssd/state"), 0);
    QCOMPARE(m_fix.text("ssd/size"), QStringLiteral("0"));
    QCOMPARE(m_fix.camera().operate({{"ssd", deed}}), QString());
    QCOMPARE(m_fix.number("ssd/state"), 1);
    m_fix.wait(299ms);
    QCOMPARE(m_fix.number("ssd/state"), 1);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("ssd/state"), 2);
    QCOMPARE(m_fix.post("/ssd-ls", "{\"long\": 1}"), 409);
    m_fix.wait(699ms);
    QCOMPARE(m_fix.number("ssd/state"), 2);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("ssd/state"), state);
    QCOMPARE(m_fix.text("ssd/name"), name);
    QCOMPARE(m_fix.text("ssd/size"), QString::number(2000000000000LL, 16));
}

void TestSimDrive::driveOfTheStartIsMountedAlready_data()
{
    QTest::addColumn<Medium>("medium");
    QTest::addColumn<int>("state");
    QTest::newRow("none") << Medium::None << 0;
    QTest::newRow("formatted") << Medium::Formatted << 3;
    QTest::newRow("blank") << Medium::Blank << 8;
    QTest::newRow("broken") << Medium::Broken << 7;
}

void TestSimDrive::driveOfTheStartIsMountedAlready()
{
    QFETCH(Medium, medium);
    QFETCH(int, state);
    Config config = m_fix.config();
    config.medium = medium;
    m_fix.start(config);
    QCOMPARE(m_fix.number("ssd/state"), state);
}

void TestSimDrive::ejectedDriveGoesThroughItsStates()
{
    QCOMPARE(m_fix.post("/ssd-umount"), 200);
    QCOMPARE(m_fix.number("ssd/state"), 4);
    m_fix.wait(300ms);
    QCOMPARE(m_fix.number("ssd/state"), 5);
    QCOMPARE(m_fix.post("/ssd-umount"), 409);
    m_fix.wait(200ms);
    QCOMPARE(m_fix.number("ssd/state"), 6);
    m_fix.camera().operate({{"ssd", "remove"}});
    m_fix.camera().operate({{"ssd", "insert"}});
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("ssd/state"), 3);
}

void TestSimDrive::blankDriveIsEjectedAndFormatted()
{
    m_fix.camera().operate({{"ssd", "insert-blank"}});
    m_fix.wait(1s);
    QCOMPARE(m_fix.post("/ssd-ls", "{\"long\": 1}"), 409);
    QCOMPARE(m_fix.post("/ssd-format", "{\"name\":\"FRESH\"}"), 200);
    QCOMPARE(m_fix.number("ssd/state"), 9);
    m_fix.wait(2s);
    QCOMPARE(m_fix.number("ssd/state"), 3);
    QCOMPARE(m_fix.text("ssd/name"), QStringLiteral("FRESH"));
    m_fix.camera().operate({{"ssd", "insert-blank"}});
    m_fix.wait(1s);
    QCOMPARE(m_fix.post("/ssd-umount"), 200);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("ssd/state"), 6);
}

void TestSimDrive::brokenDriveTakesNothing()
{
    m_fix.camera().operate({{"ssd", "insert-broken"}});
    m_fix.wait(1s);
    QCOMPARE(m_fix.post("/ssd-ls", "{\"long\": 1}"), 409);
    QCOMPARE(m_fix.post("/ssd-format", "{\"name\":\"X\"}"), 409);
    QCOMPARE(m_fix.post("/ssd-umount"), 409);
}

void TestSimDrive::autosaveShowsItsProgress()
{
    const qint64 before = m_fix.text("ssd/used").toLongLong(nullptr, 16);
    recordTake();
    QCOMPARE(m_fix.number("ssd/wr_state"), 1);
    QCOMPARE(m_fix.number("ssd/progress"), 0);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 0);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray({1}));
    // 768320000 bytes at 500 a microsecond: 1536.64 ms.
    m_fix.wait(400ms);
    QCOMPARE(m_fix.number("ssd/progress"), 26);
    m_fix.wait(1136ms);
    QCOMPARE(m_fix.number("ssd/progress"), 99);
    QCOMPARE(m_fix.number("ssd/wr_state"), 1);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("ssd/wr_state"), 0);
    QCOMPARE(m_fix.number("ssd/progress"), 0);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 1);
    QCOMPARE(m_fix.text("ssd/used").toLongLong(nullptr, 16), before + 768320000);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray());
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray({1}));
}

void TestSimDrive::autosaveNamesItsRecordings()
{
    QCOMPARE(m_fix.put("/ssd/name_seq", "41"), 200);
    recordTake();
    QCOMPARE(m_fix.number("ssd/name_seq"), 42);
    m_fix.wait(10s);
    QVERIFY(names().contains("run_41.vesk"));
    QCOMPARE(m_fix.put("/ssd/autosave/name", "\"<seq:4> <time:yyyy>\""), 200);
    recordTake();
    m_fix.wait(10s);
    QVERIFY2(names().contains("0042 2025.vesk"), qPrintable(names().join(u',')));
    QCOMPARE(m_fix.put("/ssd/autosave/name", "\"plain\""), 200);
    recordTake();
    m_fix.wait(10s);
    QVERIFY(names().contains("plain.vesk"));
    QCOMPARE(m_fix.number("ssd/name_seq"), 43);
}

void TestSimDrive::autosaveOfASelection_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("count");
    QTest::addColumn<qint64>("frames");
    QTest::newRow("inside") << QByteArray("100") << QByteArray("50") << qint64(50);
    QTest::newRow("over the end") << QByteArray("9990") << QByteArray("4294967295") << qint64(10);
    QTest::newRow("over the start") << QByteArray("-2147483648") << QByteArray("2147483655") << qint64(7);
    QTest::newRow("outside") << QByteArray("10000") << QByteArray("5") << qint64(0);
    QTest::newRow("of no frame") << QByteArray("0") << QByteArray("0") << qint64(0);
}

void TestSimDrive::autosaveOfASelection()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, count);
    QFETCH(qint64, frames);
    QCOMPARE(m_fix.put("/ssd/autosave/mode", "3"), 200);
    QCOMPARE(m_fix.put("/ssd/autosave/start", start), 200);
    QCOMPARE(m_fix.put("/ssd/autosave/cnt", count), 200);
    const qint64 before = m_fix.text("ssd/used").toLongLong(nullptr, 16);
    recordTake();
    QCOMPARE(m_fix.number("ssd/wr_state"), frames > 0 ? 1 : 0);
    m_fix.wait(10s);
    QCOMPARE(m_fix.text("ssd/used").toLongLong(nullptr, 16), before + frames * 76832);
}

void TestSimDrive::autosaveDeletesTheTakeAtItsEnd()
{
    QCOMPARE(m_fix.put("/ssd/autosave/mode", "5"), 200);
    recordTake();
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray({1}));
    QCOMPARE(m_fix.post("/del", "{\"take\":1}"), 409);
    m_fix.wait(2s);
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray());
    QCOMPARE(m_fix.number("ssd/wr_seq"), 1);
}

void TestSimDrive::writingDriveIsNeitherEjectedNorFormatted()
{
    recordTake();
    QCOMPARE(m_fix.post("/ssd-umount"), 409);
    QCOMPARE(m_fix.post("/ssd-format", "{\"name\":\"X\"}"), 409);
    QCOMPARE(m_fix.number("ssd/state"), 3);
    m_fix.wait(2s);
    QCOMPARE(m_fix.post("/ssd-umount"), 200);
}

void TestSimDrive::pulledDriveFreesTheTake()
{
    recordTake();
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray({1}));
    m_fix.camera().operate({{"ssd", "remove"}});
    QCOMPARE(m_fix.number("ssd/wr_state"), 0);
    QCOMPARE(m_fix.value("acq/locked_takes").toArray(), QJsonArray());
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 0);
    QCOMPARE(m_fix.post("/del", "{\"take\":1}"), 200);
}

void TestSimDrive::noAutosaveWithoutModeFeatureOrDrive_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<int>("feature");
    QTest::addColumn<Medium>("medium");
    QTest::newRow("disabled") << QByteArray("0") << 3 << Medium::Formatted;
    QTest::newRow("without its enabling bit") << QByteArray("4") << 3 << Medium::Formatted;
    QTest::newRow("camera without") << QByteArray("1") << 2 << Medium::Formatted;
    QTest::newRow("blank drive") << QByteArray("1") << 3 << Medium::Blank;
    QTest::newRow("no drive") << QByteArray("1") << 3 << Medium::None;
}

void TestSimDrive::noAutosaveWithoutModeFeatureOrDrive()
{
    QFETCH(QByteArray, mode);
    QFETCH(int, feature);
    QFETCH(Medium, medium);
    Config config = m_fix.config();
    config.features["ssd-save"] = feature;
    config.medium = medium;
    m_fix.start(config);
    QCOMPARE(m_fix.put("/ssd/autosave/mode", mode), feature < 3 ? 409 : 200);
    QCOMPARE(m_fix.put("/acq/trig_offset", "100"), 200);
    recordTake();
    QCOMPARE(m_fix.value("acq/saved_takes").toArray(), QJsonArray({1}));
    QCOMPARE(m_fix.number("ssd/wr_state"), 0);
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("ssd/wr_seq"), 0);
}

void TestSimDrive::autosaveValuesAreRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("mode of a fourth bit") << "/ssd/autosave/mode" << QByteArray("8");
    QTest::newRow("negative mode") << "/ssd/autosave/mode" << QByteArray("-1");
    QTest::newRow("start below 32 bits") << "/ssd/autosave/start" << QByteArray("-2147483649");
    QTest::newRow("start above 32 bits") << "/ssd/autosave/start" << QByteArray("2147483648");
    QTest::newRow("negative count") << "/ssd/autosave/cnt" << QByteArray("-1");
    QTest::newRow("count above 32 bits") << "/ssd/autosave/cnt" << QByteArray("4294967296");
    QTest::newRow("number for a name") << "/ssd/autosave/name" << QByteArray("1");
    QTest::newRow("sequence above 32 bits") << "/ssd/name_seq" << QByteArray("4294967296");
}

void TestSimDrive::autosaveValuesAreRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    const QJsonObject before = m_fix.camera().status();
    QCOMPARE(m_fix.client().put(path, body), 400);
    QCOMPARE(m_fix.camera().status(), before);
}

QTEST_GUILESS_MAIN(TestSimDrive)
#include "tst_sim_drive.moc"
