#include "save/background.h"
#include "save/file_save_job.h"
#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"
#include "take/abstract_take_reader.h"
#include "tests/save/sim_save_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QNetworkReply>
#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <memory>
#include <sys/resource.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/** Writes a chunk each time the test lets it. */
class GateWorker : public VeskWriterWorker
{
public:
    explicit GateWorker(QSemaphore *gate) : m_gate(gate) {}

    void writeFrames(QByteArray data, qlonglong, qlonglong framesRead, qlonglong framesRemaining) override
    {
        while (!m_gate->tryAcquire(1, 10)) {
            if (hasEnded())
                return;
        }
        niceness = getpriority(PRIO_PROCESS, 0); // of the calling thread
        m_hash.addData(data);
        emit framesWritten(framesRead);
        if (framesRemaining == 0)
            emit finished(SaveJob::FinishDone, QString::fromLatin1(m_hash.result().toHex()));
    }

    static inline std::atomic<int> niceness = 0;

private:
    QSemaphore *m_gate;
    QCryptographicHash m_hash{QCryptographicHash::Sha1};
};

class GateWriter : public VeskWriter
{
public:
    GateWriter(FileSaveJob *job, QSemaphore *gate) : VeskWriter(job), m_gate(gate) {}

    bool start() override
    {
        auto made = std::make_unique<GateWorker>(m_gate);
        connect(made.get(), &VeskWriterWorker::finished, this,
                [this](SaveJob::FinishState, const QString &text) { hash = text; });
        startWorker(std::move(made), u"GateWriter Thread"_s);
        return true;
    }
    void close(SaveJob::FinishState state) override { closed.append(state); }

    QList<SaveJob::FinishState> closed;
    QString hash;

private:
    QSemaphore *m_gate;
};

class GateJob : public FileSaveJob
{
public:
    GateJob(Take *take, qlonglong startFr, qlonglong frCnt, QSemaphore *gate)
        : FileSaveJob(take, startFr, frCnt, {}, {}, nullptr)
    {
        setWriter(new GateWriter(this, gate));
    }
    void open() override {}
};

/** A writer that does not keep up, and the life of its thread. */
class TestSavePacing : public QObject
{
    Q_OBJECT

private:
    static constexpr qint64 RecordSize = 640 * 480 + 32;
    static constexpr int Frames = 400; // 123 MB
    static constexpr qint64 MiB = 1024 * 1024;

    std::unique_ptr<SimSaveFixture> m_fixture;
    QSemaphore m_gate;
    std::unique_ptr<GateJob> m_job;
    qint64 m_bytesRead = 0;

    void start(qlonglong frCnt)
    {
        m_job = std::make_unique<GateJob>(m_fixture->take, 0, frCnt, &m_gate);
        m_bytesRead = 0;
        connect(reader(), &AbstractTakeReader::readyRead, this,
                [this](const QByteArray &data) { m_bytesRead += data.size(); });
        m_fixture->camera->fileSaveJobQueue()->enqueue(m_job.get());
    }

    AbstractTakeReader *reader() const { return m_job->findChild<AbstractTakeReader *>(); }
    GateWriter *writer() const { return dynamic_cast<GateWriter *>(m_job->writer()); }

    static bool isTransferring()
    {
        const auto replies = VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>();
        return std::any_of(replies.cbegin(), replies.cend(),
                           [](const QNetworkReply *reply) { return reply->url().path() == u"/xfer"; });
    }

    /** Bytes of memory that the process uses. */
    static qint64 residentBytes()
    {
        QFile file(u"/proc/self/statm"_s);
        if (!file.open(QIODevice::ReadOnly))
            return -1;
        return file.readAll().split(' ')[1].toLongLong() * 4096;
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = 0, .last = Frames - 1, .frameRate = 500.0, .res = u"640x480"_s});
        QVERIFY(m_fixture->open());
        m_gate.tryAcquire(m_gate.available());
    }

    void cleanup()
    {
        m_gate.release(100000);
        m_job.reset();
        m_fixture.reset();
    }

    void whatTheWorkerHasNoTimeForStaysInTheConnection()
    {
        const qint64 before = residentBytes();
        start(Frames);
        QTRY_VERIFY_WITH_TIMEOUT(m_bytesRead > AbstractTakeReader::MaxWaitingBytes, 60000);
        QSignalSpy chunks(reader(), &AbstractTakeReader::readyRead);
        QVERIFY(!chunks.wait(500));
        QVERIFY2(m_bytesRead <= AbstractTakeReader::MaxWaitingBytes + 3 * MiB,
                 qPrintable(QString::number(m_bytesRead)));
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
        const qint64 grown = residentBytes() - before;
        QVERIFY2(grown < 110 * MiB, qPrintable(QString::number(grown)));
#else
        Q_UNUSED(before)
#endif
        QVERIFY(isTransferring());
        QCOMPARE(m_job->state(), SaveJob::Saving);
    }

    void answerWaitsInTheConnectionWhileTheGuiThreadIsBusyFromTheStart()
    {
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
        const qint64 before = residentBytes();
#endif
        start(Frames);
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::sendPostedEvents();
        QThread::sleep(500ms); // the camera needs 100 for all frames
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
        const qint64 grown = residentBytes() - before;
        QVERIFY2(grown < 32 * MiB, qPrintable(QString::number(grown)));
#endif
        m_gate.release(100000);
        QTRY_COMPARE_WITH_TIMEOUT(m_job->state(), SaveJob::Done, 60000);
    }

    void everyFrameComesInOrderHoweverSlowTheWorker()
    {
        start(Frames);
        QTRY_VERIFY_WITH_TIMEOUT(m_bytesRead > AbstractTakeReader::MaxWaitingBytes, 60000);
        // One chunk at a time: at no moment does more than the limit wait.
        while (m_job->state() == SaveJob::Saving) {
            const qlonglong written = writer()->framesWritten();
            m_gate.release();
            QTRY_VERIFY_WITH_TIMEOUT(writer()->framesWritten() > written, 60000);
            QVERIFY(m_bytesRead - writer()->framesWritten() * RecordSize <=
                    AbstractTakeReader::MaxWaitingBytes + 8 * MiB); // with what the library held at the end
            if (writer()->framesWritten() == Frames)
                QTRY_COMPARE(m_job->state(), SaveJob::Done);
        }
        QCOMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(m_bytesRead, Frames * RecordSize);
        QCryptographicHash sent(QCryptographicHash::Sha1);
        for (int fr = 0; fr < Frames; fr += 50)
            sent.addData(m_fixture->sent(fr, 50));
        QCOMPARE(writer()->hash, QString::fromLatin1(sent.result().toHex()));
    }

    void writerGivesWayToTheWindow()
    {
        const int own = getpriority(PRIO_PROCESS, 0);
        GateWorker::niceness = -1;
        m_gate.release(100000);
        start(10);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(GateWorker::niceness, std::max(own, WriterNiceness));
        QCOMPARE(getpriority(PRIO_PROCESS, 0), own);
    }

    void writerOfAProgramThatGivesWayToMoreStaysSo()
    {
        int niceness = 0;
        std::thread([&niceness] {
            setpriority(PRIO_PROCESS, 0, 19); // of this thread alone
            giveWay();
            niceness = getpriority(PRIO_PROCESS, 0);
        }).join();
        QCOMPARE(niceness, 19);
    }

    void chunksOfChangingSizeDoNotHeapUpMemory()
    {
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = 0, .last = 3999, .frameRate = 500.0, .res = u"640x480"_s});
        QVERIFY(m_fixture->open());
        // One frame a chunk while they come one by one, and many once the connection is full.
        m_fixture->fault({.kind = q4sim::FaultKind::Drip, .ms = 4, .bytes = RecordSize});
        const qint64 before = residentBytes();
        start(4000);
        QTRY_VERIFY_WITH_TIMEOUT(m_bytesRead > AbstractTakeReader::MaxWaitingBytes, 60000);
        qint64 most = 0;
        for (int chunk = 0; chunk < 400; ++chunk) {
            m_gate.release();
            QTest::qWait(chunk < 200 ? 4 : 25);
            most = std::max(most, residentBytes() - before);
        }
        QCOMPARE(m_job->state(), SaveJob::Saving);
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
        QVERIFY2(most < 150 * MiB, qPrintable(QString::number(most / MiB)));
#endif
    }

    void cancelOfASaveThatWaitsForItsWorkerClosesTheConnection()
    {
        start(Frames);
        QTRY_VERIFY_WITH_TIMEOUT(m_bytesRead > AbstractTakeReader::MaxWaitingBytes, 60000);
        QSignalSpy chunks(reader(), &AbstractTakeReader::readyRead);
        QVERIFY(!chunks.wait(200));
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QTRY_VERIFY(!isTransferring());
        QCOMPARE(m_job->error(), QString());
        QCOMPARE(writer()->closed, QList<SaveJob::FinishState>({SaveJob::FinishCancelled}));
    }

    void cancelBehindTheEndOfTheAnswerDropsWhatIsNotWritten()
    {
        start(40);
        QTRY_COMPARE(m_bytesRead, 40 * RecordSize);
        QTRY_VERIFY(!isTransferring());
        QCOMPARE(m_job->state(), SaveJob::Saving);
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QCOMPARE(m_job->error(), QString());
        QCOMPARE(writer()->framesWritten(), 0);
        QCOMPARE(writer()->closed, QList<SaveJob::FinishState>({SaveJob::FinishCancelled}));
    }

    void cancelOfASaveThatWaitsForItsTurnOrIsOverChangesNothing()
    {
        start(4);
        GateJob waiting(m_fixture->take, 0, 4, &m_gate);
        m_fixture->camera->fileSaveJobQueue()->enqueue(&waiting);
        waiting.cancel();
        QCOMPARE(waiting.state(), SaveJob::Queued);
        m_gate.release(100000);
        QTRY_COMPARE(waiting.state(), SaveJob::Done);
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(writer()->closed, QList<SaveJob::FinishState>({SaveJob::FinishDone}));
    }

    void cancelDropsTheChunksThatWait()
    {
        start(Frames);
        QTRY_VERIFY(m_bytesRead > 30 * MiB);
        QElapsedTimer clock;
        clock.start();
        m_job->cancel();
        QVERIFY(clock.elapsed() < 2000);
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QCOMPARE(m_job->writer()->worker(), nullptr);
        m_gate.release(1000);
        QSignalSpy written(writer(), &VeskWriter::framesWrittenChanged);
        QVERIFY(!written.wait(100));
        QCOMPARE(m_gate.available(), 1000);
    }

    void progressFollowsTheFramesThatAreWritten()
    {
        start(40);
        QList<double> steps;
        connect(m_job.get(), &SaveJob::progressChanged, this, [&] { steps.append(m_job->progress()); });
        m_gate.release(100000);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        QVERIFY(!steps.isEmpty());
        QVERIFY(std::is_sorted(steps.cbegin(), steps.cend()));
        QCOMPARE(steps.last(), 100.0);
        QCOMPARE(writer()->framesWritten(), 40);
        QCOMPARE(writer()->closed, QList<SaveJob::FinishState>({SaveJob::FinishDone}));
    }

    void jobThatGoesInTheMiddleTakesThreadAndConnectionAlong()
    {
        start(Frames);
        QTRY_VERIFY(m_bytesRead > 8 * MiB);
        m_job.reset();
        QTRY_VERIFY(!isTransferring());
    }
};

VESK_TEST_MAIN(TestSavePacing)
#include "tst_save_pacing.moc"
