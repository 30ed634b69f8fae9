#include "camera_fixture.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QHttpMultiPart>
#include <QSet>
#include <QTcpSocket>

using namespace q4sim;
using namespace std::chrono_literals;

namespace
{

// What a form of one part is made of.
struct Form {
    QByteArray disposition = R"(form-data; name="q4fw"; filename="new.q4fw")";
    QByteArray file = "firmware";
};

QByteArray body(const Form &form)
{
    return "--XX\r\nContent-Disposition: " + form.disposition + "\r\n\r\n" + form.file + "\r\n--XX--\r\n";
}

} // namespace

class TestSimUpload : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_fix.start(m_fix.config()); }
    void goodFileIsInstalled();
    void fileIsKnownByItsHash_data();
    void fileIsKnownByItsHash();
    void requestInSmallestPiecesIsReadWhole();
    void badFormIsRefused_data();
    void badFormIsRefused();
    void emptyFileIsAnError();
    void rejectedFileIsAnError();
    void nextUploadBeginsAtIdle();
    void connectionBreaksAtAByte_data();
    void connectionBreaksAtAByte();
    void clientThatGoesAwayLeavesAnOpenUpload();
    void uploadIsReadSlowly();
    void arrivalFaultEndsAfterItsCount();
    void refusedUploadHasNoEffect();
    void otherRequestsAreAnsweredMeanwhile();
    void completeUploadIsLoggedWithoutItsBody();
    void nextRequestFollowsOnTheSameConnection();

private:
    // A form as a client of the camera's makes it.
    Reply upload(const QByteArray &file, const QString &name = QStringLiteral("new.q4fw"));
    Reply sendForm(const QByteArray &content, const QByteArray &type = "multipart/form-data; boundary=XX");

    // Waits until the camera has so many bytes of a form.
    bool waitForBytes(qint64 bytes)
    {
        return QTest::qWaitFor([&] { return m_fix.camera().upload()["received"].toInteger() == bytes; });
    }

    // Waits for the end, and notes what client and camera know of the upload meanwhile.
    Reply replyTo(QNetworkReply *sent);

    struct Progress {
        qint64 sent;        ///< bytes, by the client
        QJsonObject upload; ///< by the camera
    };
    QList<Progress> m_progress;
    CameraFixture m_fix{QStringLiteral("127.0.1.74")};
    QNetworkAccessManager m_manager;
};

Reply TestSimUpload::upload(const QByteArray &file, const QString &name)
{
    auto *form = new QHttpMultiPart(QHttpMultiPart::FormDataType);
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentDispositionHeader,
                   QStringLiteral("form-data; name=\"q4fw\"; filename=\"%1\"").arg(name));
    part.setBody(file);
    form->append(part);
    QNetworkReply *sent = m_manager.post(QNetworkRequest(QUrl("http://127.0.1.74/q4fw")), form);
    form->setParent(sent);
    return replyTo(sent);
}

Reply TestSimUpload::sendForm(const QByteArray &content, const QByteArray &type)
{
    QNetworkRequest request(QUrl("http://127.0.1.74/q4fw"));
    request.setRawHeader("Content-Type", type);
    return replyTo(m_manager.post(request, content));
}

Reply TestSimUpload::replyTo(QNetworkReply *sent)
{
    m_progress.clear();
    connect(sent, &QNetworkReply::uploadProgress, this,
            [this](qint64 bytes) { m_progress.append({bytes, m_fix.camera().upload()}); });
    QSignalSpy finished(sent, &QNetworkReply::finished);
    finished.wait(20000);
    Reply reply;
    reply.status = sent->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    reply.body = sent->readAll();
    reply.error = sent->error();
    sent->deleteLater();
    return reply;
}

void TestSimUpload::goodFileIsInstalled()
{
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(999ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 1);
    const QJsonObject report = m_fix.client().get("/sim/state").json()["upload"].toObject();
    QCOMPARE(report["complete"].toBool(), true);
    QCOMPARE(report["error"].toString(), QString());
    QCOMPARE(report["file_name"].toString(), QStringLiteral("new.q4fw"));
    QCOMPARE(report["size"].toInteger(), 3);
    // SHA-256 of "abc", as published with the algorithm.
    QCOMPARE(report["sha256"].toString(),
             QStringLiteral("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    QVERIFY(report["expected"].toInteger() > 3);
    QCOMPARE(report["received"].toInteger(), report["expected"].toInteger());
}

void TestSimUpload::fileIsKnownByItsHash_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("one byte") << QByteArray(1, '\0');
    QTest::newRow("line ends and dashes") << QByteArray("\r\n--\r\n\r\n--XX\r--");
    QTest::newRow("ends with half a boundary") << QByteArray("data\r\n--bound");
    QTest::newRow("one piece") << QByteArray(65536, 'a');
    QTest::newRow("a piece and a byte") << QByteArray(65537, 'b');
    QByteArray noise(5000000, '\0');
    quint32 state = 1;
    for (char &byte : noise) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    QTest::newRow("noise of 5 MB") << noise;
}

void TestSimUpload::fileIsKnownByItsHash()
{
    QFETCH(QByteArray, file);
    QCOMPARE(upload(file, QString::fromUtf8("Füße 2.q4fw")).status, 200);
    const QJsonObject report = m_fix.camera().upload();
    QCOMPARE(report["file_name"].toString(), QString::fromUtf8("Füße 2.q4fw"));
    QCOMPARE(report["size"].toInteger(), file.size());
    QCOMPARE(report["sha256"].toString().toLatin1(),
             QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex());
}

void TestSimUpload::requestInSmallestPiecesIsReadWhole()
{
    const QByteArray file = "a\r\n--XY\r\n-";
    const QByteArray form = body({.file = file});
    const QByteArray head =
        "POST /q4fw HTTP/1.1\r\nHost: x\r\nContent-Length: " + QByteArray::number(form.size()) +
        "\r\nContent-Type: multipart/form-data; boundary=\"XX\"\r\n\r\n";
    QTcpSocket socket;
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    for (const char byte : head) {
        QCOMPARE(m_fix.camera().upload()["expected"].toInteger(), 0);
        socket.write(&byte, 1);
        QCoreApplication::processEvents();
    }
    QVERIFY(QTest::qWaitFor([&] { return m_fix.camera().upload()["expected"].toInteger() == form.size(); }));
    for (qsizetype i = 0; i < form.size(); ++i) {
        socket.write(form.mid(i, 1));
        QVERIFY(waitForBytes(i + 1));
    }
    QVERIFY(QTest::qWaitFor([&] { return socket.bytesAvailable() > 0; }));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200 "));
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), file.size());
    QCOMPARE(m_fix.camera().upload()["sha256"].toString().toLatin1(),
             QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex());
}

void TestSimUpload::badFormIsRefused_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("content");
    const QByteArray type = "multipart/form-data; boundary=XX";
    const auto named = [](const char *disposition) { return body({.disposition = disposition}); };
    QTest::newRow("JSON") << QByteArray("application/json") << QByteArray("{}");
    QTest::newRow("mixed parts") << QByteArray("multipart/mixed; boundary=XX") << body({});
    QTest::newRow("no boundary") << QByteArray("multipart/form-data") << body({});
    QTest::newRow("other boundary") << QByteArray("multipart/form-data; boundary=YY") << body({});
    QTest::newRow("empty") << type << QByteArray();
    QTest::newRow("no part") << type << QByteArray("--XX--\r\n");
    QTest::newRow("two parts") << type
                               << QByteArray(body({}).chopped(4) + "\r\nContent-Disposition: form-data; "
                                                                   "name=\"q4fw\"; filename=\"b\"\r\n\r\n"
                                                                   "x\r\n--XX--\r\n");
    QTest::newRow("no end") << type << body({}).chopped(8);
    QTest::newRow("no headers") << type << QByteArray("--XX\r\n\r\nfirmware\r\n--XX--\r\n");
    QTest::newRow("broken header") << type << QByteArray("--XX\r\nfirmware\r\n\r\nx\r\n--XX--\r\n");
    QTest::newRow("headers without an end") << type << QByteArray("--XX\r\n" + QByteArray(20000, 'a'));
    QTest::newRow("other name") << type << named(R"(form-data; name="file"; filename="new.q4fw")");
    QTest::newRow("no name") << type << named(R"(form-data; filename="q4fw")");
    QTest::newRow("no file name") << type << named(R"(form-data; name="q4fw")");
    QTest::newRow("empty file name") << type << named(R"(form-data; name="q4fw"; filename="")");
    QTest::newRow("folders") << type << named(R"(form-data; name="q4fw"; filename="/tmp/new.q4fw")");
    QTest::newRow("type of its own")
        << type << named("form-data; name=\"q4fw\"; filename=\"a\"\r\nContent-Type: text/plain");
    QTest::newRow("head without a body") << type
                                         << QByteArray("--XX\r\nContent-Disposition: form-data; "
                                                       "name=\"q4fw\"; filename=\"a\"\r\n\r\n--XX--\r\n");
    QTest::newRow("words before the part") << type << "hello\r\n" + body({});
    QTest::newRow("words behind the end") << type << body({}) + "bye\r\n";
    QTest::newRow("attachment") << type << named(R"(attachment; name="q4fw"; filename="new.q4fw")");
}

void TestSimUpload::badFormIsRefused()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, content);
    const Reply reply = sendForm(content, type);
    QCOMPARE(reply.status, 400);
    QVERIFY(!reply.json()["error"].toString().isEmpty());
    QCOMPARE(m_fix.camera().upload()["error"].toString(), reply.json()["error"].toString());
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 2);
}

void TestSimUpload::emptyFileIsAnError()
{
    QCOMPARE(upload({}).status, 200);
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(-1), 0);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 3);
}

void TestSimUpload::rejectedFileIsAnError()
{
    Config config = m_fix.config();
    config.rejectedFirmware = "OLD";
    m_fix.start(config);
    QCOMPARE(upload("OLD firmware").status, 200);
    m_fix.wait(999ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(1ms);
    QCOMPARE(m_fix.number("camera/fw_state"), 4);
    QCOMPARE(upload("NEW firmware, not OLD").status, 200);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 1);
}

void TestSimUpload::nextUploadBeginsAtIdle()
{
    QCOMPARE(upload({}).status, 200);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 3);
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.wait(1s);
    QCOMPARE(m_fix.number("camera/fw_state"), 1);
}

void TestSimUpload::connectionBreaksAtAByte_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<double>("least");
    // Of a file of 3 MB and about 200 bytes of form around it.
    const auto row = [](const char *name, const Fault &fault, double least) {
        QTest::newRow(name) << fault << least;
    };
    row("first byte", {.kind = FaultKind::CloseUpload, .bytes = 1}, 1);
    row("in the file", {.kind = FaultKind::CloseUpload, .bytes = 100000}, 100000);
    row("half of it", {.kind = FaultKind::CloseUpload}, 1500000);
    row("most of it", {.kind = FaultKind::CloseUpload, .percent = 90}, 2700000);
}

void TestSimUpload::connectionBreaksAtAByte()
{
    QFETCH(Fault, fault);
    QFETCH(double, least);
    m_fix.camera().setFault(Route::Q4fw, fault);
    const Reply reply = upload(QByteArray(3000000, 'x'));
    QCOMPARE(reply.status, 0);
    QVERIFY(reply.error != QNetworkReply::NoError);
    const QJsonObject report = m_fix.camera().upload();
    QCOMPARE(report["complete"].toBool(true), false);
    QVERIFY(report["expected"].toDouble() > 3000000.0);
    QVERIFY(report["received"].toDouble() >= least);
    // What the network brings at once, 64 KiB or twice that, is counted at once.
    QVERIFY(report["received"].toDouble() < least + 200000.0);
    QVERIFY(report["received"].toInteger() < report["expected"].toInteger());
    QVERIFY(!report.contains("sha256"));
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
    m_fix.camera().clearFaults();
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), 3);
}

void TestSimUpload::clientThatGoesAwayLeavesAnOpenUpload()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=XX\r\n"
                 "Content-Length: 1000\r\n\r\n--XX\r\n");
    QVERIFY(waitForBytes(6));
    socket.abort();
    QCOMPARE(upload("abc").status, 200);
    QCOMPARE(m_fix.camera().upload()["complete"].toBool(), true);
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), 3);
}

void TestSimUpload::uploadIsReadSlowly()
{
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::SlowUpload, .ms = 20, .bytes = 250000});
    QElapsedTimer timer;
    timer.start();
    const QByteArray file(20000000, 'x');
    QCOMPARE(upload(file).status, 200);
    // 80 pieces, 20 ms each, less what a coarse timer and the first piece may take off.
    QVERIFY2(timer.elapsed() >= 1400, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_fix.camera().upload()["size"].toInteger(), 20000000);
    QCOMPARE(m_fix.camera().upload()["sha256"].toString().toLatin1(),
             QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex());
    // The network holds a few megabytes back; what is sent beyond them follows the camera's pace. The client
    // tells of it every 100 ms.
    QSet<int> percents;
    for (const Progress &progress : std::as_const(m_progress)) {
        percents.insert(static_cast<int>(100 * progress.sent / file.size()));
        QVERIFY(progress.sent - progress.upload["received"].toInteger() < 6000000);
    }
    QVERIFY2(percents.size() >= 8, qPrintable(QString::number(percents.size())));
}

void TestSimUpload::arrivalFaultEndsAfterItsCount()
{
    m_fix.camera().setFault(Route::Q4fw,
                            {.kind = FaultKind::SlowUpload, .ms = 300, .bytes = 100000, .count = 2});
    for (int i = 0; i < 2; ++i) {
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(upload(QByteArray(300000, 'x')).status, 200);
        QVERIFY2(timer.elapsed() >= 300, qPrintable(QString::number(timer.elapsed())));
    }
    // At that pace it would take 30 s, for which upload() does not wait.
    QCOMPARE(upload(QByteArray(10000000, 'x')).status, 200);
}

void TestSimUpload::refusedUploadHasNoEffect()
{
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::Http500, .count = 1});
    QCOMPARE(upload("abc").status, 500);
    QCOMPARE(m_fix.camera().upload()["complete"].toBool(true), false);
    m_fix.wait(10s);
    QCOMPARE(m_fix.number("camera/fw_state"), 0);
}

void TestSimUpload::otherRequestsAreAnsweredMeanwhile()
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    socket.write("POST /q4fw HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=XX\r\n"
                 "Content-Length: 1000\r\n\r\n--XX\r\n");
    QVERIFY(waitForBytes(6));
    QCOMPARE(m_fix.client().get().status, 200);
    QCOMPARE(m_fix.put("/camera/name", "\"Busy\""), 200);
    QCOMPARE(m_fix.text("camera/name"), QStringLiteral("Busy"));
}

void TestSimUpload::completeUploadIsLoggedWithoutItsBody()
{
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::CloseUpload, .bytes = 1});
    QVERIFY(upload("abc").error != QNetworkReply::NoError);
    QCOMPARE(m_fix.camera().requests("POST", "/q4fw").size(), 0);
    m_fix.camera().clearFaults();
    QCOMPARE(upload("abc").status, 200);
    const QList<Request> received = m_fix.camera().requests("POST", "/q4fw");
    QCOMPARE(received.size(), 1);
    QVERIFY(received[0].header("Content-Type").startsWith("multipart/form-data; boundary="));
    QCOMPARE(received[0].body, QByteArray());
    QCOMPARE(received[0].timeNs, 1741944413LL * 1000000000);
}

void TestSimUpload::nextRequestFollowsOnTheSameConnection()
{
    const QByteArray form = body({});
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.1.74"), 80);
    QVERIFY(socket.waitForConnected());
    QByteArray all;
    const auto answers = [&](int count) {
        all += socket.readAll();
        return all.count("HTTP/1.1 200 OK\r\n") == count && all.endsWith('}');
    };
    const QByteArray upload = "POST /q4fw HTTP/1.1\r\nHost: x\r\nContent-Type: multipart/form-data; "
                              "boundary=XX\r\nContent-Length: " +
                              QByteArray::number(form.size()) + "\r\n\r\n" + form;
    socket.write(upload);
    QVERIFY(QTest::qWaitFor([&] { return answers(1); }));
    socket.write("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&] { return answers(2); }));
    const QByteArray status = all.mid(all.lastIndexOf("\r\n\r\n") + 4);
    QCOMPARE(QJsonDocument::fromJson(status).object(), m_fix.camera().status());
    m_fix.camera().setFault(Route::Q4fw, {.kind = FaultKind::CloseUpload, .bytes = 1});
    socket.write(upload);
    QVERIFY(QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
    QCOMPARE(socket.readAll(), QByteArray());
    QCOMPARE(m_fix.camera().upload()["complete"].toBool(true), false);
}

QTEST_GUILESS_MAIN(TestSimUpload)
#include "tst_sim_upload.moc"
