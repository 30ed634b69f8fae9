#include "http_client.h"

#include "sim/camera.h"

#include <QJsonArray>
#include <QProcess>
#include <QTest>

#include <csignal>

using namespace q4sim;

class TestSimProgram : public QObject
{
    Q_OBJECT

private slots:
    void helpNamesEveryOption();
    void oneCameraIsServedOnEachAddress();
    void optionsReachTheCamera();
    void oldFirmwareBringsOldHeadersAndYearOffset();
    void signalEndsItCleanly_data();
    void signalEndsItCleanly();
    void badStartIsOneSentenceAndAnExitCode_data();
    void badStartIsOneSentenceAndAnExitCode();
    void busyAddressIsOneSentenceAndAnExitCode();

private:
    // Starts it and reads its output up to `lines` lines.
    QByteArray start(QProcess &process, const QStringList &arguments, int lines = 1)
    {
        process.start(QString::fromLocal8Bit(Q4SIM_PROGRAM), arguments);
        QByteArray said;
        while (said.count('\n') < lines && process.waitForReadyRead(20000))
            said += process.readAllStandardOutput();
        return said;
    }

    static void end(QProcess &process)
    {
        process.terminate();
        QVERIFY(process.waitForFinished(20000));
    }
};

void TestSimProgram::helpNamesEveryOption()
{
    QProcess process;
    process.start(QString::fromLocal8Bit(Q4SIM_PROGRAM), {"--help"});
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitCode(), 0);
    const QByteArray help = process.readAllStandardOutput();
    for (const char *option :
         {"--address", "--port", "--no-discovery", "--name", "--serial", "--pattern", "--resolutions",
          "--firmware", "--headers", "--year-offset", "--memory", "--partitions", "--frame-rate",
          "--black-refs", "--no-lens", "--no-shutter", "--no-ssd", "--seed"})
        QVERIFY2(help.contains(option), option);
}

void TestSimProgram::oneCameraIsServedOnEachAddress()
{
    QProcess process;
    const QByteArray said = start(
        process, {"--address", "127.0.1.60", "--address", "127.0.1.61", "--name", "Lab", "--serial", "A"}, 2);
    QVERIFY(said.contains("camera \"Lab\", serial A, 640x480 RGGB at 1000 fps, on 127.0.1.60 port 80\n"));
    QVERIFY(said.contains("camera \"Lab 2\", serial A-2, 640x480 RGGB at 1000 fps, on 127.0.1.61 port 80\n"));
    QCOMPARE(HttpClient("127.0.1.60").get().json()["camera"]["name"].toString(), QStringLiteral("Lab"));
    QCOMPARE(HttpClient("127.0.1.61").get().json()["camera"]["serial"].toString(), QStringLiteral("A-2"));
    end(process);
}

void TestSimProgram::optionsReachTheCamera()
{
    QProcess process;
    start(process, {"--address",
                    "127.0.1.60",
                    "--port",
                    "8080",
                    "--no-discovery",
                    "--pattern",
                    "mono",
                    "--resolutions",
                    "800x600,640x480",
                    "--memory",
                    "100",
                    "--partitions",
                    "2",
                    "--frame-rate",
                    "250",
                    "--no-lens",
                    "--no-shutter",
                    "--no-ssd",
                    "--headers",
                    "fr",
                    "--year-offset",
                    "time"});
    HttpClient client("127.0.1.60:8080");
    const QJsonObject status = client.get().json();
    QCOMPARE(status["camera"]["cfa"].toInt(-1), 0);
    QCOMPARE(status["acq"]["valid_res"].toArray(), QJsonArray({"800x600", "640x480"}));
    QCOMPARE(status["acq"]["fr_rate"].toDouble(), 250.0);
    QCOMPARE(status["acq"]["prtn_cnt"].toInt(), 2);
    QCOMPARE(status["takes"]["take1"]["prtn_fr_cnt"].toInt(), 100 * 1048576 / 2 / (32 + 800 * 600));
    QCOMPARE(status["lens"]["state"].toInt(-1), 0);
    QCOMPARE(status["features"]["shtr"].toInt(-1), 0);
    QCOMPARE(status["ssd"]["state"].toInt(-1), 0);
    QVERIFY(status["time"]["year_offset"].isDouble());
    QCOMPARE(status["features"]["q4fw"].toInt(), 1);
    QCOMPARE(client.send("POST", "/xfer", R"({"type":3,"src":1})").header("Fr-Width"), QByteArray("800"));
    end(process);
}

void TestSimProgram::oldFirmwareBringsOldHeadersAndYearOffset()
{
    QProcess process;
    start(process, {"--address", "127.0.1.60", "--firmware", "old"});
    HttpClient client("127.0.1.60");
    const QJsonObject status = client.get().json();
    QVERIFY(status["camera"]["fw_ver"].isDouble());
    QVERIFY(status["time"]["year_offset"].isDouble());
    QCOMPARE(client.send("POST", "/xfer", R"({"type":3,"src":1})").header("Fr-Height"), QByteArray("480"));
    end(process);
}

void TestSimProgram::signalEndsItCleanly_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestSimProgram::signalEndsItCleanly()
{
    QFETCH(int, signal);
    QProcess process;
    start(process, {"--address", "127.0.1.60"});
    QCOMPARE(HttpClient("127.0.1.60").get().status, 200);
    QCOMPARE(kill(static_cast<pid_t>(process.processId()), signal), 0);
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardError(), QByteArray());
}

void TestSimProgram::badStartIsOneSentenceAndAnExitCode_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const QStringList &arguments, const char *text) {
        QTest::newRow(name) << arguments << QByteArray(text);
    };
    row("address of nobody", {"--address", "192.0.2.1"}, "q4sim: cannot listen on 192.0.2.1 port 80: ");
    row("no address", {"--address", "nowhere"}, "q4sim: \"nowhere\" is no address\n");
    row("port", {"--port", "70000"}, "q4sim: --port must be 1 to 65535\n");
    row("pattern", {"--pattern", "cmyk"}, "q4sim: --pattern must be one of mono|rggb|gbrg\n");
    row("resolution", {"--resolutions", "big"}, "q4sim: \"big\" is no resolution\n");
    row("rate", {"--frame-rate", "fast"}, "q4sim: --frame-rate must be a number\n");
    row("negative rate", {"--frame-rate=-5"}, "q4sim: the frame rate must be above 0\n");
    row("stray word", {"127.0.1.60"}, "q4sim: unexpected \"127.0.1.60\"\n");
}

void TestSimProgram::badStartIsOneSentenceAndAnExitCode()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, text);
    QProcess process;
    process.start(QString::fromLocal8Bit(Q4SIM_PROGRAM), arguments);
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    const QByteArray said = process.readAllStandardError();
    QVERIFY2(said.startsWith(text), said.constData());
    QCOMPARE(said.count('\n'), 1);
}

void TestSimProgram::busyAddressIsOneSentenceAndAnExitCode()
{
    Config config;
    config.address = QHostAddress(QStringLiteral("127.0.1.62"));
    Camera camera(config);
    QCOMPARE(camera.listen(), QString());
    QProcess process;
    process.start(QString::fromLocal8Bit(Q4SIM_PROGRAM), {"--address", "127.0.1.62"});
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitCode(), 1);
    const QByteArray said = process.readAllStandardError();
    QVERIFY2(said.startsWith("q4sim: cannot listen on 127.0.1.62 port 80: "), said.constData());
}

QTEST_GUILESS_MAIN(TestSimProgram)
#include "tst_sim_program.moc"
