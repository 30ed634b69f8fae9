#include "sim/camera.h"

#include <QNetworkDatagram>
#include <QTest>
#include <QUdpSocket>

using namespace q4sim;

namespace
{

Config testConfig(const QString &address)
{
    Config config;
    config.address = QHostAddress(address);
    return config;
}

// Sends a datagram from 127.0.1.39 and collects the source addresses of `wanted` answers.
QStringList ask(const QByteArray &datagram, const QString &to, int wanted, int timeoutMs = 5000)
{
    QUdpSocket socket;
    if (!socket.bind(QHostAddress(QStringLiteral("127.0.1.39")), 8890,
                     QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint))
        return {QStringLiteral("cannot bind")};
    socket.writeDatagram(datagram, QHostAddress(to), 8890);
    QStringList sources;
    const auto collect = [&] {
        while (socket.hasPendingDatagrams()) {
            const QNetworkDatagram answer = socket.receiveDatagram();
            const QString source = QHostAddress(answer.senderAddress().toIPv4Address()).toString();
            // Cameras of tests that run at the same time hear the broadcast too.
            if (source.startsWith(u"127.0.1.3") && answer.data() == "VESK_REPLY\n" &&
                answer.senderPort() == 8890)
                sources.append(source);
        }
        return sources.size() >= wanted;
    };
    // The caller judges the list: some ask for more than should come.
    [[maybe_unused]] const bool complete = QTest::qWaitFor(collect, timeoutMs);
    sources.sort();
    return sources;
}

} // namespace

class TestSimDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void everyCameraAnswersABroadcastFromItsOwnAddress();
    void datagramToOneCameraIsAnsweredByItAlone();
    void otherDatagramsAreIgnored();
    void closedCameraDoesNotAnswer();
    void cameraWithoutDiscoveryDoesNotAnswer();
};

void TestSimDiscovery::everyCameraAnswersABroadcastFromItsOwnAddress()
{
    Camera first(testConfig("127.0.1.30"));
    Camera second(testConfig("127.0.1.31"));
    Camera third(testConfig("127.0.1.32"));
    for (Camera *camera : {&first, &second, &third})
        QCOMPARE(camera->listen(), QString());
    QCOMPARE(ask("VESK_BCAST\n", "127.255.255.255", 3),
             QStringList({"127.0.1.30", "127.0.1.31", "127.0.1.32"}));
}

void TestSimDiscovery::datagramToOneCameraIsAnsweredByItAlone()
{
    Camera first(testConfig("127.0.1.30"));
    Camera second(testConfig("127.0.1.31"));
    QCOMPARE(first.listen(), QString());
    QCOMPARE(second.listen(), QString());
    QCOMPARE(ask("VESK_BCAST\n", "127.0.1.31", 2, 300), QStringList("127.0.1.31"));
}

void TestSimDiscovery::otherDatagramsAreIgnored()
{
    Camera camera(testConfig("127.0.1.30"));
    QCOMPARE(camera.listen(), QString());
    for (const QByteArray &other :
         {QByteArray("VESK_BCAST"), QByteArray("vesk_bcast\n"), QByteArray("VESK_REPLY\n")})
        QCOMPARE(ask(other, "127.0.1.30", 1, 150), QStringList());
    QCOMPARE(ask("VESK_BCAST\n", "127.0.1.30", 1), QStringList("127.0.1.30"));
}

void TestSimDiscovery::closedCameraDoesNotAnswer()
{
    Camera first(testConfig("127.0.1.30"));
    Camera second(testConfig("127.0.1.31"));
    QCOMPARE(first.listen(), QString());
    QCOMPARE(second.listen(), QString());
    first.close();
    QCOMPARE(ask("VESK_BCAST\n", "127.255.255.255", 2, 300), QStringList("127.0.1.31"));
}

void TestSimDiscovery::cameraWithoutDiscoveryDoesNotAnswer()
{
    Config config = testConfig("127.0.1.30");
    config.discovery = false;
    Camera camera(config);
    QCOMPARE(camera.listen(), QString());
    QCOMPARE(ask("VESK_BCAST\n", "127.0.1.30", 1, 200), QStringList());
}

QTEST_GUILESS_MAIN(TestSimDiscovery)
#include "tst_sim_discovery.moc"
