#include "take_frames_case.h"

#include "sim/footage.h"
#include "sim/frame_run.h"

#include <algorithm>
#include <array>
#include <sys/socket.h>
#include <unistd.h>

using namespace q4sim;

// Runs of frames on their way to the client: whole, in order, and as fast as it takes them.
class TestSimFrameRuns : public QObject, private TakeFramesCase
{
    Q_OBJECT

public:
    TestSimFrameRuns() : TakeFramesCase(QStringLiteral("127.0.1.84")) {}

private slots:
    void init() { start(); }
    void runFormGivesTheFramesInOrder();
    void longRunComesWhole_data();
    void longRunComesWhole();
    void longRunWaitsForItsClient();
    void connectionThatTakesLittleGetsEveryByteOnce_data();
    void connectionThatTakesLittleGetsEveryByteOnce();
    void endlessRunStartsAtOnceAndEndsWithItsClient();
};

void TestSimFrameRuns::runFormGivesTheFramesInOrder()
{
    make({});
    const Reply reply = m_fix.client().send("POST", "/xfer", transferOf(1, -2, 5));
    QCOMPARE(reply.header("Img-Size"), QByteArray("38400"));
    QCOMPARE(reply.body.size(), 5 * recordSize);
    for (int i = 0; i < 5; ++i) {
        const QByteArray record = reply.body.mid(i * recordSize, recordSize);
        QCOMPARE(shownNumber(record, width), std::optional<qint32>(i - 2));
        QCOMPARE(record, transfer(1, i - 2));
    }
}

void TestSimFrameRuns::longRunComesWhole_data()
{
    QTest::addColumn<TakeOrder>("order");
    QTest::newRow("of a scene that moves") << TakeOrder{.first = -500, .last = 499};
    QTest::newRow("of frames that are all the same")
        << TakeOrder{.first = -500, .last = 499, .look = Look::Plain};
    QTest::newRow("of frames of which one differs")
        << TakeOrder{.first = -500,
                     .last = 499,
                     .look = Look::Plain,
                     .changes = {{.first = 3, .last = 3, .x = 5, .y = 7, .add = 30}}};
}

void TestSimFrameRuns::longRunComesWhole()
{
    QFETCH(const TakeOrder, order);
    make(order);
    const Reply reply = m_fix.client().send("POST", "/xfer", transferOf(1, -500, 1000));
    QCOMPARE(reply.error, QNetworkReply::NoError);
    QCOMPARE(reply.header("Content-Length"), QByteArray("38432000"));
    QCOMPARE(reply.body.size(), 1000 * recordSize);
    for (int i = 0; i < 1000; i += 20) // short runs, which are made before they are sent
        QVERIFY2(reply.body.mid(i * recordSize, 20 * recordSize) == transfer(1, i - 500, 20),
                 qPrintable(QString::number(i)));
    // The connection is as good as before.
    QCOMPARE(transfer(1, 7).size(), recordSize);
}

void TestSimFrameRuns::longRunWaitsForItsClient()
{
    make({.first = 0, .last = 999, .look = Look::Plain, .code = 77});
    QNetworkReply *reply = m_fix.client().start("POST", "/xfer", transferOf(1, 0, 1000));
    // The network manager forgets a limit that it is told before it has begun.
    connect(reply, &QNetworkReply::metaDataChanged, this, [reply] { reply->setReadBufferSize(100000); });
    QByteArray body;
    qint64 mostWaiting = 0;
    const auto take = [&] {
        mostWaiting = std::max(mostWaiting, reply->bytesAvailable());
        body += reply->readAll();
    };
    // Others are served meanwhile, until the network takes no more.
    QVERIFY(QTest::qWaitFor([reply] { return reply->bytesAvailable() >= recordSize; }, 20000));
    for (int i = 0; i < 100; ++i)
        QCOMPARE(m_fix.client().get().status, 200);
    connect(reply, &QNetworkReply::readyRead, this, take);
    QSignalSpy finished(reply, &QNetworkReply::finished);
    take();
    QVERIFY(finished.wait(60000));
    take();
    QVERIFY2(mostWaiting < body.size() / 2, qPrintable(QString::number(mostWaiting)));
    QCOMPARE(body.size(), 1000 * recordSize);
    for (int i = 0; i < 1000; i += 20)
        QVERIFY2(body.mid(i * recordSize, 20 * recordSize) == transfer(1, i, 20),
                 qPrintable(QString::number(i)));
    reply->deleteLater();
}

void TestSimFrameRuns::connectionThatTakesLittleGetsEveryByteOnce_data()
{
    QTest::addColumn<Look>("look");
    QTest::newRow("of a scene that moves") << Look::Moving;
    QTest::newRow("of frames that are all the same") << Look::Plain;
}

void TestSimFrameRuns::connectionThatTakesLittleGetsEveryByteOnce()
{
    QFETCH(const Look, look);
    const auto footage = std::make_shared<const Footage>();
    const auto scene =
        std::make_shared<const SceneRenderer>(SceneParams{.width = 320, .height = 120, .look = look});
    const QByteArray whole = FrameRun(footage, scene, -3, 7).readAll();
    FrameRun run(footage, scene, -3, 7);
    std::array<int, 2> ends{};
    QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0);
    const int small = 5000;
    QCOMPARE(setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &small, sizeof small), 0);
    QByteArray body;
    int refused = 0;
    for (qint64 sent = 0; body.size() < whole.size();) {
        const qint64 wanted = std::min<qint64>(70001, whole.size() - sent);
        const qint64 taken = run.send(ends[0], sent, wanted);
        refused += taken < wanted;
        sent += taken;
        QByteArray part(3001, Qt::Uninitialized);
        const ssize_t got = read(ends[1], part.data(), size_t(part.size()));
        QVERIFY(got > 0);
        body += part.first(got);
    }
    close(ends[0]);
    close(ends[1]);
    QVERIFY(refused > 0);
    QVERIFY(body == whole);
}

void TestSimFrameRuns::endlessRunStartsAtOnceAndEndsWithItsClient()
{
    make({.first = 0, .last = 1LL << 33});
    QNetworkReply *reply = m_fix.client().start("POST", "/xfer", transferOf(1, 0, 1LL << 33));
    reply->setReadBufferSize(1 << 20);
    QVERIFY(QTest::qWaitFor([reply] { return reply->bytesAvailable() >= 3 * recordSize; }, 20000));
    QCOMPARE(reply->header(QNetworkRequest::ContentLengthHeader).toLongLong(), recordSize * (1LL << 33));
    QCOMPARE(shownNumber(reply->read(recordSize), width), std::optional<qint32>(0));
    QCOMPARE(shownNumber(reply->read(recordSize), width), std::optional<qint32>(1));
    // Others are served meanwhile.
    QCOMPARE(m_fix.client().get().status, 200);
    reply->abort();
    reply->deleteLater();
    QCOMPARE(m_fix.client().get().status, 200);
}

QTEST_GUILESS_MAIN(TestSimFrameRuns)
#include "tst_sim_frame_runs.moc"
