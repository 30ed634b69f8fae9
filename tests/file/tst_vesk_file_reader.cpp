#include "file/vesk_file.h"
#include "file/vesk_file_reader.h"
#include "save/file_save_job.h"
#include "save/vesk_writer.h"
#include "save/vesk_writer_worker.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/thread_names.h"
#include "tests/support/vesk_test_main.h"

#include <QBuffer>
#include <QMutex>
#include <QSemaphore>
#include <QSignalSpy>

#include <limits>
#include <memory>

using namespace HandMade;

namespace
{
struct Chunk {
    QByteArray data;
    qlonglong frames;
    qlonglong framesRead;
    qlonglong framesRemaining;
};

/** What the writer's thread and the test share. */
struct Taken {
    QMutex mutex;
    QList<Chunk> chunks;
    /** A worker that holds takes one for each chunk, behind the chunk. */
    QSemaphore leave;
    bool holds = false;

    QList<Chunk> all()
    {
        const QMutexLocker locker(&mutex);
        return chunks;
    }
    QByteArray bytes()
    {
        QByteArray bytes;
        for (const Chunk &chunk : all())
            bytes += chunk.data;
        return bytes;
    }
};

class KeepingWorker : public VeskWriterWorker
{
public:
    explicit KeepingWorker(Taken *taken) : m_taken(taken) {}
    void writeFrames(QByteArray data, qlonglong frames, qlonglong framesRead,
                     qlonglong framesRemaining) override
    {
        {
            const QMutexLocker locker(&m_taken->mutex);
            m_taken->chunks.append({data, frames, framesRead, framesRemaining});
        }
        if (m_taken->holds)
            m_taken->leave.acquire();
        emit framesWritten(framesRead);
        if (framesRemaining == 0)
            emit finished(SaveJob::FinishDone);
    }

private:
    Taken *m_taken;
};

class KeepingWriter : public VeskWriter
{
public:
    KeepingWriter(FileSaveJob *job, Taken *taken) : VeskWriter(job), m_taken(taken) {}
    bool start() override
    {
        startWorker(std::make_unique<KeepingWorker>(m_taken), "KeepingWriter Thread");
        return true;
    }
    void close(SaveJob::FinishState state) override { closedWith.append(state); }

    QList<SaveJob::FinishState> closedWith;

private:
    Taken *m_taken;
};

/** A save that keeps the chunks as they come. */
class KeepingJob : public FileSaveJob
{
public:
    KeepingJob(VeskFile *file, qlonglong startFr, qlonglong frCnt, Taken *taken)
        : FileSaveJob(SaveSource(file), startFr, frCnt, {}, FileNameTemplate(), nullptr)
    {
        setWriter(new KeepingWriter(this, taken));
    }
    void open() override {}
    KeepingWriter *keepingWriter() const { return static_cast<KeepingWriter *>(writer()); }
};
} // namespace

/** Frames of a native file on their way into a save. */
class TestVeskFileReader : public QObject
{
    Q_OBJECT

private:
    /** Frames -5 to 44, or what is left of them. */
    void writeFile(qsizetype size = -1)
    {
        const QByteArray bytes = usualRun(-5, 44);
        m_file = std::make_unique<VeskFile>(m_folder->write(size < 0 ? bytes : bytes.first(size)),
                                            VeskApp::instance());
        QVERIFY(m_file->open());
    }
    static QByteArray records(int firstFr, int lastFr)
    {
        QByteArray bytes;
        for (int i = firstFr + 5; i <= lastFr + 5; ++i)
            bytes += record(quint32(i), uchar(10 * i));
        return bytes;
    }

    std::unique_ptr<Folder> m_folder;
    std::unique_ptr<VeskFile> m_file;

private slots:
    void init()
    {
        m_folder = std::make_unique<Folder>();
        writeFile();
    }
    void cleanup() { m_file.reset(); }

    void framesComeInChunksOfTenAndTheRest_data()
    {
        QTest::addColumn<int>("startFr");
        QTest::addColumn<int>("frCnt");
        QTest::addColumn<QList<int>>("chunks");
        QTest::newRow("one frame") << -5 << 1 << QList<int>{1};
        QTest::newRow("last frame") << 44 << 1 << QList<int>{1};
        QTest::newRow("nine") << 0 << 9 << QList<int>{9};
        QTest::newRow("ten") << 3 << 10 << QList<int>{10};
        QTest::newRow("eleven") << -4 << 11 << QList<int>{10, 1};
        QTest::newRow("twenty-five") << 7 << 25 << QList<int>{10, 10, 5};
        QTest::newRow("all") << -5 << 50 << QList<int>{10, 10, 10, 10, 10};
    }

    void framesComeInChunksOfTenAndTheRest()
    {
        QFETCH(const int, startFr);
        QFETCH(const int, frCnt);
        QFETCH(const QList<int>, chunks);
        Taken taken;
        KeepingJob job(m_file.get(), startFr, frCnt, &taken);
        QVERIFY(job.start());
        QTRY_COMPARE(job.state(), SaveJob::Done);
        const QList<Chunk> got = taken.all();
        QCOMPARE(got.size(), chunks.size());
        qlonglong framesRead = 0;
        for (qsizetype i = 0; i < got.size(); ++i) {
            framesRead += chunks[i];
            QCOMPARE(got[i].frames, chunks[i]);
            QCOMPARE(got[i].framesRead, framesRead);
            QCOMPARE(got[i].framesRemaining, frCnt - framesRead);
            QCOMPARE(got[i].data.size(), chunks[i] * 16);
        }
        QCOMPARE(taken.bytes(), records(startFr, startFr + frCnt - 1));
        QCOMPARE(job.progress(), 100.0);
        QCOMPARE(job.error(), "");
        QCOMPARE(job.keepingWriter()->closedWith, QList{SaveJob::FinishDone});
    }

    void framesThatAreNotThereEndTheSaveBehindTheWholeChunks_data()
    {
        QTest::addColumn<qint64>("size"); // of the file
        QTest::addColumn<qint64>("startFr");
        QTest::addColumn<qint64>("frCnt");
        QTest::addColumn<int>("whole"); // frames in whole chunks
        const auto row = [](const char *name, qint64 size, qint64 startFr, qint64 frCnt, int whole) {
            QTest::newRow(name) << size << startFr << frCnt << whole;
        };
        constexpr qint64 max = std::numeric_limits<qint64>::max();
        constexpr qint64 min = std::numeric_limits<qint64>::min();
        row("no frame", 4096, -5, 25, 0);
        row("no gap", 200, -5, 25, 0);
        row("in the first chunk", 4096 + 9 * 16 + 15, -5, 25, 0);
        row("in the third chunk", 4096 + 20 * 16, -5, 25, 20);
        row("one byte short", 4096 + 25 * 16 - 1, -5, 25, 20);
        row("more than there are", 4096 + 50 * 16, 40, 15, 0);
        row("before the first", 4096 + 50 * 16, -6, 2, 0);
        row("at the end of all numbers", 4096 + 50 * 16, max, 1, 0);
        row("at the start of all numbers", 4096 + 50 * 16, min, 1, 0);
        row("endless", 4096 + 50 * 16, -5, max, 50);
        row("less than none", 4096 + 50 * 16, -5, min, 0);
    }

    void framesThatAreNotThereEndTheSaveBehindTheWholeChunks()
    {
        QFETCH(const qint64, size);
        QFETCH(const qint64, startFr);
        QFETCH(const qint64, frCnt);
        QFETCH(const int, whole);
        m_file.reset();
        writeFile(size);
        Taken taken;
        KeepingJob job(m_file.get(), startFr, frCnt, &taken);
        QVERIFY(job.start());
        QTRY_COMPARE(job.state(), SaveJob::Error);
        QCOMPARE(job.error(), "read error");
        QCOMPARE(taken.bytes(), records(-5, -6 + whole));
        QCOMPARE(job.writer()->framesWritten(), whole);
        QCOMPARE(job.keepingWriter()->closedWith, QList{SaveJob::FinishError});
    }

    void framesOfImpossibleSizeCannotBeSaved_data()
    {
        QTest::addColumn<QByteArray>("res");
        QTest::addColumn<QByteArray>("metaSize");
        QTest::newRow("nothing at all") << QByteArray("0x0") << QByteArray("0");
        QTest::newRow("4 GB each") << QByteArray("65535x65535") << QByteArray("8");
        QTest::newRow("2 GB of metadata") << QByteArray("4x2") << QByteArray("2147483647");
    }

    void framesOfImpossibleSizeCannotBeSaved()
    {
        QFETCH(const QByteArray, res);
        QFETCH(const QByteArray, metaSize);
        const QString path = m_folder->write(
            usual("{\"acq\":{\"res\":\"" + res + "\"},\"first_fr\":0,\"meta\":{\"size\":" + metaSize + "}}",
                  {}),
            "b.vesk");
        QVERIFY(QFile::resize(path, 1LL << 40));
        VeskFile file(path, VeskApp::instance());
        QVERIFY(file.open());
        Taken taken;
        KeepingJob job(&file, 0, 10, &taken);
        QVERIFY(job.start());
        QTRY_COMPARE(job.state(), SaveJob::Error);
        QCOMPARE(job.error(), "read error");
        QCOMPARE(taken.all().size(), 0);
    }

    void fileThatIsGoneCannotBeSaved()
    {
        QVERIFY(QFile::remove(m_file->fileName()));
        Taken taken;
        KeepingJob job(m_file.get(), 0, 10, &taken);
        QVERIFY(!job.start());
        QCOMPARE(job.reader()->property("error"), "can't open file for reading");
        QCOMPARE(job.state(), SaveJob::Error);
        // The writer, which knows of no error, has the last word.
        QCOMPARE(job.error(), QString());
        QCOMPARE(taken.all().size(), 0);
    }

    void sourceThatIsGoneCannotBeSaved()
    {
        Taken taken;
        KeepingJob job(m_file.get(), 0, 10, &taken);
        m_file.reset();
        QVERIFY(!job.start());
        QCOMPARE(job.state(), SaveJob::Error);
        QCOMPARE(taken.all().size(), 0);
    }

    void nextChunkIsReadWhenTheWriterHasWrittenTheOneBefore()
    {
        Taken taken;
        taken.holds = true;
        KeepingJob job(m_file.get(), -5, 50, &taken);
        QVERIFY(job.start());
        QTRY_COMPARE(taken.all().size(), 1);
        // What is read behind this moment cannot have been read ahead.
        QVERIFY(QFile::resize(m_file->fileName(), 4096 + 25 * 16));
        taken.leave.release(3);
        QTRY_COMPARE(job.state(), SaveJob::Error);
        QCOMPARE(job.error(), "read error");
        QCOMPARE(taken.bytes(), records(-5, 14));
    }

    void threadOfTheReaderHasItsName()
    {
        Taken taken;
        taken.holds = true;
        KeepingJob job(m_file.get(), -5, 50, &taken);
        QTRY_VERIFY(!hasThread("VeskFileReader Thread"));
        QVERIFY(job.start());
        QTRY_COMPARE(taken.all().size(), 1);
        QVERIFY(hasThread("VeskFileReader Thread"));
        taken.leave.release(5);
        QTRY_COMPARE(job.state(), SaveJob::Done);
        QTRY_VERIFY(!hasThread("VeskFileReader Thread"));
    }

    void closedFileIsSavedToTheEnd()
    {
        Taken taken;
        taken.holds = true;
        KeepingJob job(m_file.get(), -5, 50, &taken);
        QVERIFY(job.start());
        QTRY_COMPARE(taken.all().size(), 1);
        m_file->close();
        QCOMPARE(job.source(), m_file.get());
        m_file.reset();
        QCOMPARE(job.source(), nullptr);
        QCOMPARE(job.state(), SaveJob::Saving);
        taken.leave.release(5);
        QTRY_COMPARE(job.state(), SaveJob::Done);
        QCOMPARE(taken.bytes(), records(-5, 44));
    }

    void filePlaysWhileItIsSaved()
    {
        Taken taken;
        taken.holds = true;
        KeepingJob job(m_file.get(), -5, 50, &taken);
        QVERIFY(job.start());
        m_file->setSelected(true);
        m_file->pause();
        for (int chunk = 1; chunk <= 5; ++chunk) {
            QTRY_COMPARE(taken.all().size(), chunk);
            m_file->setFr(44 - chunk);
            QCOMPARE(m_file->veskFrame()->seconds(), quint32(49 - chunk));
            taken.leave.release();
        }
        QTRY_COMPARE(job.state(), SaveJob::Done);
        QCOMPARE(taken.bytes(), records(-5, 44));
    }

    void saveCanBeCancelledAtEveryChunk_data()
    {
        QTest::addColumn<int>("chunks"); // written before
        for (int chunks = 0; chunks < 5; ++chunks)
            QTest::addRow("%d", chunks) << chunks;
    }

    void saveCanBeCancelledAtEveryChunk()
    {
        QFETCH(const int, chunks);
        Taken taken;
        KeepingJob job(m_file.get(), -5, 50, &taken);
        int left = chunks;
        connect(job.writer(), &VeskWriter::framesWrittenChanged, &job, [&] {
            if (--left == 0)
                job.cancel();
        });
        QVERIFY(job.start());
        if (chunks == 0)
            job.cancel();
        QTRY_COMPARE(job.state(), SaveJob::Cancelled);
        QCOMPARE(job.error(), "");
        QCOMPARE(job.keepingWriter()->closedWith, QList{SaveJob::FinishCancelled});
        const auto got = taken.all().size();
        QVERIFY(got >= chunks && got <= chunks + 1);
        QCOMPARE(taken.bytes(), records(-5, -6 + 10 * int(got)));
    }

    void jobMayBeDestroyedInTheMiddle()
    {
        Taken taken;
        auto job = std::make_unique<KeepingJob>(m_file.get(), -5, 50, &taken);
        QVERIFY(job->start());
        QTRY_VERIFY(!taken.all().isEmpty());
        job.reset();
        const auto got = taken.all().size();
        QVERIFY(got >= 1 && got <= 5);
        QCOMPARE(taken.all().size(), got);
    }

    void workerReadsOneChunkACallAndNoneBehindTheLast()
    {
        QByteArray bytes = "..abcdefghijklmnopqrstuvwxyz";
        QBuffer device(&bytes);
        QVERIFY(device.open(QIODevice::ReadOnly));
        VeskFileReaderWorker worker(
            &device, {.startFr = 101, .frCnt = 12, .firstFr = 100, .dataOffset = 2, .frameSize = 2});
        QList<QVariantList> told;
        connect(&worker, &VeskFileReaderWorker::readyRead, this,
                [&told](const QByteArray &data, qlonglong frames, qlonglong framesRead, qlonglong remaining) {
                    told.append({data, frames, framesRead, remaining});
                });
        connect(&worker, &VeskFileReaderWorker::finished, this,
                [&told](SaveJob::FinishState state, const QString &error) { told.append({state, error}); });
        worker.read();
        QCOMPARE(told.size(), 1);
        worker.read();
        worker.read();
        QCOMPARE(told, QList<QVariantList>({{QByteArray("cdefghijklmnopqrstuv"), 10LL, 10LL, 2LL},
                                            {QByteArray("wxyz"), 2LL, 12LL, 0LL},
                                            {QVariant::fromValue(SaveJob::FinishDone), QString()}}));
    }
};

VESK_TEST_MAIN(TestVeskFileReader)
#include "tst_vesk_file_reader.moc"
