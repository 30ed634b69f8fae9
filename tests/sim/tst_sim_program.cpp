#include "http_client.h"

#include "sim/camera.h"

#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <csignal>

using namespace q4sim;

class TestSimProgram : public QObject
{
    Q_OBJECT

private slots:
    void helpNamesEveryOption();
    void oneCameraIsServedOnEachAddress();
    void optionsReachTheCamera();
    void equipmentReachesTheCamera();
    void takesAreThereAtStart();
    void recordingsAreThereAtStart();
    void longRunLeavesTheMemoryFlat_data();
    void longRunLeavesTheMemoryFlat();
    void bareCameraCanBeGivenThings();
    void largeFirmwareFileIsTaken();
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

    /// Bytes of memory that a process has in use.
    static qint64 residentBytes(qint64 pid)
    {
        QFile file(QStringLiteral("/proc/%1/statm").arg(pid));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * 4096 : -1;
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
         {"--address",         "--port",        "--no-discovery", "--name",          "--serial",
          "--pattern",         "--resolutions", "--firmware",     "--headers",       "--year-offset",
          "--memory",          "--partitions",  "--frame-rate",   "--black-refs",    "--no-lens",
          "--no-shutter",      "--no-ssd",      "--seed",         "--bare",          "--af-switch",
          "--shutter-fails",   "--ssd",         "--feature",      "--video-formats", "--sync-fps",
          "--reject-firmware", "--take"})
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

void TestSimProgram::equipmentReachesTheCamera()
{
    QProcess process;
    start(process, {"--address", "127.0.1.60", "--af-switch", "1", "--shutter-fails", "--ssd", "blank",
                    "--feature", "lens=1", "--feature", "q4fw=-1", "--video-formats", "none", "--sync-fps",
                    "50", "--reject-firmware", "BAD"});
    HttpClient client("127.0.1.60");
    QCOMPARE(client.put("/acq/fsync_mode", "1"), 200);
    QCOMPARE(client.post("/shtr", R"({"pos":1})"), 200);
    QVERIFY(QTest::qWaitFor([&] { return client.get().json()["shtr"]["state"].toInt() == 2; }));
    const QJsonObject status = client.get().json();
    QCOMPARE(status["lens"]["af_switch"].toInt(), 1);
    QCOMPARE(status["ssd"]["state"].toInt(), 8);
    QCOMPARE(status["features"]["lens"].toInt(), 1);
    QVERIFY(!status["features"].toObject().contains("q4fw"));
    QVERIFY(!status["video"].toObject().contains("valid_format"));
    QCOMPARE(status["acq"]["fr_rate"].toDouble(), 50.0);
    end(process);
}

void TestSimProgram::takesAreThereAtStart()
{
    QProcess process;
    start(process, {"--address", "127.0.1.60", "--take", R"({"take":2,"first":-3,"last":5,"rate":59.94})",
                    "--take", R"({"locked":true})"});
    HttpClient client("127.0.1.60");
    const QJsonObject status = client.get().json();
    QCOMPARE(status["acq"]["saved_takes"].toArray(), QJsonArray({1, 2}));
    QCOMPARE(status["acq"]["locked_takes"].toArray(), QJsonArray({1}));
    const QJsonObject told = client.get("/takes/take2").json()["takes"]["take2"].toObject();
    QCOMPARE(told["fr_cnt"].toInt(), 9);
    QCOMPARE(told["acq"]["fr_rate"].toDouble(), 59.94);
    end(process);
}

void TestSimProgram::recordingsAreThereAtStart()
{
    QProcess process;
    start(process, {"--address", "127.0.1.60", "--recordings", "3", "--address", "127.0.1.61"});
    const auto listed = [](const QString &address) {
        return HttpClient(address).send("POST", "/ssd-ls", "{\"long\": 1}").json()["ssd-ls"].toArray();
    };
    QCOMPARE(listed("127.0.1.61").size(), 3);
    QCOMPARE(listed("127.0.1.60")[2].toObject(),
             QJsonObject({{"name", "run 00003.vesk"}, {"size", 3 * 76832}, {"time", 1700000120}}));
    end(process);
    start(process, {"--address", "127.0.1.60", "--recording",
                    R"({"name":"a b.vesk","time":1700000000,"first":-1,"last":2,"res":"16x16"})",
                    "--ssd-size", "1", "--ssd-speed", "1", "--partition-order", "next"});
    QCOMPARE(listed("127.0.1.60"),
             QJsonArray({QJsonObject{{"name", "a b.vesk"}, {"size", 4 * 288}, {"time", 1700000000}}}));
    const QJsonObject ssd = HttpClient("127.0.1.60").get().json()["ssd"].toObject();
    QCOMPARE(ssd["size"].toString(), QString::number(1000000, 16));
    end(process);
}

void TestSimProgram::longRunLeavesTheMemoryFlat_data()
{
    QTest::addColumn<qint64>("frames");
    QTest::addColumn<int>("pauseMs"); // of the client, behind each 8 MiB
    QTest::newRow("a gigabyte") << qint64(3255) << 0;
    QTest::newRow("slow client") << qint64(400) << 20;
}

void TestSimProgram::longRunLeavesTheMemoryFlat()
{
    QFETCH(const qint64, frames);
    QFETCH(const int, pauseMs);
    constexpr qint64 recordSize = 32 + 640 * 480;
    constexpr qint64 burst = 8 << 20;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // An address sanitizer keeps what was freed, up to this limit.
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("quarantine_size_mb=1"));
    process.setProcessEnvironment(environment);
    start(process, {"--address", "127.0.1.60", "--take", R"({"first":0,"last":9999,"scene":"plain"})"});
    QTcpSocket socket;
    socket.setReadBufferSize(1 << 20);
    socket.connectToHost(QStringLiteral("127.0.1.60"), 80);
    QVERIFY(socket.waitForConnected(20000));
    const QByteArray body =
        QStringLiteral(R"({"type":3,"src":0,"take":1,"start":0,"cnt":%1})").arg(frames).toLatin1();
    socket.write("POST /xfer HTTP/1.1\r\nHost: camera\r\nContent-Type: application/json\r\nContent-Length: " +
                 QByteArray::number(body.size()) + "\r\n\r\n" + body);
    qint64 received = 0;
    qint64 atStart = 0;
    qint64 most = 0;
    for (qint64 mark = burst; received < frames * recordSize; received += socket.skip(burst)) {
        if (socket.bytesAvailable() == 0)
            QVERIFY2(socket.waitForReadyRead(20000), qPrintable(QString::number(received)));
        if (received < mark)
            continue;
        mark += burst;
        const qint64 resident = residentBytes(process.processId());
        QVERIFY(resident > 0);
        atStart = atStart > 0 ? atStart : resident;
        most = std::max(most, resident);
        QTest::qWait(pauseMs);
    }
    QVERIFY2(most - atStart < 32 << 20, qPrintable(QString::number(most - atStart)));
    end(process);
}

void TestSimProgram::bareCameraCanBeGivenThings()
{
    QProcess process;
    start(process, {"--address", "127.0.1.60", "--bare"});
    const QJsonObject bare = HttpClient("127.0.1.60").get().json();
    QCOMPARE(bare["camera"]["cfa"].toInt(-1), 0);
    QCOMPARE(bare["lens"]["state"].toInt(-1), 0);
    QCOMPARE(bare["ssd"]["state"].toInt(-1), 0);
    QCOMPARE(bare["features"]["q4fw"].toInt(-1), 0);
    QCOMPARE(bare["video"]["valid_format"].toArray().size(), 1);
    end(process);
    start(process, {"--address", "127.0.1.60", "--bare", "--pattern", "gbrg", "--ssd", "formatted",
                    "--feature", "q4fw=1", "--video-formats", "1280x720p50,1280x720p60"});
    const QJsonObject status = HttpClient("127.0.1.60").get().json();
    QCOMPARE(status["camera"]["cfa"].toInt(-1), 2);
    QCOMPARE(status["lens"]["state"].toInt(-1), 0);
    QCOMPARE(status["ssd"]["state"].toInt(-1), 3);
    QCOMPARE(status["features"]["q4fw"].toInt(-1), 1);
    QCOMPARE(status["features"]["shtr"].toInt(-1), 0);
    QCOMPARE(status["video"]["valid_format"].toArray(), QJsonArray({"1280x720p50", "1280x720p60"}));
    end(process);
}

void TestSimProgram::largeFirmwareFileIsTaken()
{
    QProcess process;
    start(process, {"--address", "127.0.1.60", "--no-discovery"});
    HttpClient client("127.0.1.60");
    const QByteArray head =
        "--XX\r\nContent-Disposition: form-data; name=\"q4fw\"; filename=\"a.q4fw\"\r\n\r\n";
    const QByteArray tail = "\r\n--XX--\r\n";
    constexpr qint64 pieces = 3200;
    const QByteArray piece(1 << 16, 'f');
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.60"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=XX\r\nContent-Length: " +
                 QByteArray::number(head.size() + pieces * piece.size() + tail.size()) + "\r\n\r\n" + head);
    for (qint64 i = 0; i < pieces; ++i) {
        socket.write(piece);
        while (socket.bytesToWrite() > (1 << 20))
            QVERIFY(socket.waitForBytesWritten(20000));
        // Other requests are answered meanwhile.
        if (i == pieces / 2)
            QCOMPARE(client.get().status, 200);
    }
    socket.write(tail);
    QVERIFY(QTest::qWaitFor([&] { return socket.bytesAvailable() > 0; }, 20000));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200 "));
    const QJsonObject upload = client.get("/sim/state").json()["upload"].toObject();
    QCOMPARE(upload["size"].toInteger(), 209715200);
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
    row("feature without a number", {"--feature", "lens"},
        "q4sim: --feature must be name=number, not \"lens\"\n");
    row("unknown feature", {"--feature", "zoom=1"}, "q4sim: \"zoom\" = 1 is no feature\n");
    row("drive", {"--ssd", "full"}, "q4sim: --ssd must be one of formatted|blank|broken\n");
    row("signal", {"--sync-fps=-1"}, "q4sim: the sync signal must have 0 to 100000000 frames per second\n");
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
