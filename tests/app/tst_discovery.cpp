#include "camera/camera.h"
#include "tests/support/vesk_test_main.h"

#include <QNetworkInterface>
#include <QRegularExpression>
#include <QUdpSocket>

/**
 * The discovery burst on the private network of the build environment: 10.77.0.1 and, on the other end of the
 * same cable, 10.77.0.2 and further addresses, all of them interfaces that can broadcast.
 */
class TestDiscovery : public QObject
{
    Q_OBJECT

private:
    static VeskApp *app() { return VeskApp::instance(); }
    static int sources() { return app()->veskObjModel()->count(); }
    static QString addressOf(int row)
    {
        const auto *camera = qobject_cast<Camera *>(app()->veskObjModel()->get(row));
        return camera ? camera->ipString() : QString();
    }

    /** A camera's side: hears broadcasts and counts them. */
    struct Listener {
        Listener()
        {
            socket.bind(QHostAddress("10.77.0.255"), 8890,
                        QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint);
            QObject::connect(&socket, &QUdpSocket::readyRead, &socket, [this] {
                while (socket.hasPendingDatagrams()) {
                    QByteArray data(socket.pendingDatagramSize(), '\0');
                    QHostAddress from;
                    quint16 port = 0;
                    socket.readDatagram(data.data(), data.size(), &from, &port);
                    words.append(data);
                    ports.append(port);
                    senders.append(from.toString());
                    times.append(timer.elapsed());
                }
            });
            timer.start();
        }
        QUdpSocket socket;
        QElapsedTimer timer;
        QList<QByteArray> words;
        QList<quint16> ports;
        QStringList senders;
        QList<qint64> times;
    };

    static void sayFrom(const char *address, const QByteArray &datagram)
    {
        QUdpSocket socket;
        QVERIFY(socket.bind(QHostAddress(address), 0));
        QCOMPARE(socket.writeDatagram(datagram, QHostAddress("10.77.0.1"), 8890), datagram.size());
    }

private slots:
    void initTestCase()
    {
        QStringList addresses;
        for (const QHostAddress &address : QNetworkInterface::allAddresses())
            addresses << address.toString();
        QVERIFY2(addresses.contains("10.77.0.1") && addresses.contains("10.77.0.2"),
                 "the private network is missing: run the tests with ./dev test");
    }

    void init() { QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^broadcast to ")); }

    void cleanup()
    {
        app()->stopBroadcast();
        while (auto *camera = qobject_cast<Camera *>(app()->veskObjModel()->get(0)))
            camera->disconnectCamera();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void burstSendsTwiceFromEachAddressAndNotAtOnce()
    {
        Listener listener;
        app()->startBroadcast();
        QTest::qWait(3700);
        QCOMPARE(listener.senders.count("10.77.0.1"), 2);
        QCOMPARE(listener.senders.count("10.77.0.2"), 2);
        for (qsizetype i = 0; i < listener.words.size(); ++i) {
            QCOMPARE(listener.words[i], "VESK_BCAST\n");
            QCOMPARE(listener.ports[i], 8890);
        }
        QVERIFY(listener.times.first() >= 900);
        QVERIFY2(listener.times.last() >= 1800 && listener.times.last() < 2900,
                 qPrintable(QString::number(listener.times.last())));
    }

    void startDuringABurstDoesNotRestartIt()
    {
        Listener listener;
        app()->startBroadcast();
        QTRY_COMPARE(listener.senders.count("10.77.0.1"), 1);
        // A burst that began anew would send twice more and go on past four seconds.
        QTest::qWait(400);
        app()->startBroadcast();
        QTest::qWait(3000);
        QCOMPARE(listener.senders.count("10.77.0.1"), 2);
    }

    void replyInTheSecondSecondConnectsAndALateOneIsNotHeard()
    {
        app()->startBroadcast();
        QTest::qWait(1500);
        sayFrom("10.77.0.2", "VESK_REPLY\n");
        QTRY_COMPARE(sources(), 1);
        QCOMPARE(addressOf(0), "10.77.0.2");
        QCOMPARE(app()->selectedVeskObject(), app()->veskObjModel()->get(0));
        QTest::qWait(2000);
        sayFrom("10.77.0.3", "VESK_REPLY\n");
        QTest::qWait(300);
        QCOMPARE(sources(), 1);
    }

    void severalRepliesOfOneCameraMakeOneTab()
    {
        app()->startBroadcast();
        for (int i = 0; i < 3; ++i)
            sayFrom("10.77.0.2", "VESK_REPLY\n");
        {
            // The same camera answers on the other interface's address too.
            QUdpSocket socket;
            QVERIFY(socket.bind(QHostAddress("10.77.0.2"), 0));
            socket.writeDatagram("VESK_REPLY\n", QHostAddress("10.77.0.2"), 8890);
        }
        QTRY_COMPARE(sources(), 1);
        QTest::qWait(200);
        QCOMPARE(sources(), 1);
    }

    void cameraAddedByHandIsNotAddedAgainByAScan()
    {
        app()->connectCamera(QStringLiteral("10.77.0.2"));
        app()->startBroadcast();
        sayFrom("10.77.0.2", "VESK_REPLY\n");
        QTest::qWait(300);
        QCOMPARE(sources(), 1);
    }

    void bytesBehindTheWordAreIgnored()
    {
        app()->startBroadcast();
        sayFrom("10.77.0.2", QByteArray("VESK_REPLY\n") + QByteArray(1400, '\xff'));
        QTRY_COMPARE(sources(), 1);
    }

    void otherDatagramsAreIgnored_data()
    {
        QTest::addColumn<QByteArray>("datagram");
        QTest::newRow("short") << QByteArray("VESK_REPLY");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("lower case") << QByteArray("vesk_reply\n");
        QTest::newRow("the question") << QByteArray("VESK_BCAST\n");
        QTest::newRow("no utf-8") << QByteArray("VESK_REPL\xff\xfe\xfd");
        QTest::newRow("zeros") << QByteArray(60000, '\0');
    }

    void otherDatagramsAreIgnored()
    {
        QFETCH(QByteArray, datagram);
        app()->startBroadcast();
        sayFrom("10.77.0.2", datagram);
        sayFrom("10.77.0.3", "VESK_REPLY\n");
        QTRY_COMPARE(sources(), 1);
        QCOMPARE(addressOf(0), "10.77.0.3");
    }
};

VESK_TEST_MAIN(TestDiscovery)
#include "tst_discovery.moc"
