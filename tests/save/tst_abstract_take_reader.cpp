#include "save/file_save_job.h"
#include "save/vesk_writer.h"
#include "take/abstract_take_reader.h"
#include "tests/save/save_source_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <QNetworkReply>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using Status = QHttpServerResponder::StatusCode;

/** How the answer to a save's one request is cut into chunks, and what becomes of one that is no answer. */
class TestAbstractTakeReader : public QObject
{
    Q_OBJECT

private:
    /** A chunk as the worker gets it. */
    struct Chunk {
        QByteArray data;
        qlonglong frames;
        qlonglong read;
        qlonglong remaining;
        bool operator==(const Chunk &) const = default;
    };

    std::unique_ptr<SaveSourceFixture> m_fixture;
    QList<Chunk> m_chunks;
    SaveJob *m_job = nullptr;

    /** Begins a native save of some frames from -5 on. */
    void save(qlonglong frCnt)
    {
        m_job = m_fixture->save(Util::FormatVesk, -5, frCnt);
        connect(reader(), &AbstractTakeReader::readyRead, this,
                [this](const QByteArray &data, qlonglong frames, qlonglong read, qlonglong remaining) {
                    m_chunks.append({data, frames, read, remaining});
                });
    }

    /** The same; then the camera begins to answer. */
    void beginAnswer(qlonglong frCnt, const QHttpHeaders &headers = SaveSourceFixture::frameHeaders())
    {
        m_fixture->holdFrames();
        save(frCnt);
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        m_fixture->server.beginStream(headers);
    }

    AbstractTakeReader *reader() const { return m_job->findChild<AbstractTakeReader *>(); }
    /** The request for frames is under way, or its answer still comes in. */
    bool isTransferring() const
    {
        const auto replies = VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>();
        return std::any_of(replies.cbegin(), replies.cend(),
                           [](const QNetworkReply *reply) { return reply->url().path() == u"/xfer"; });
    }
    /** The records in the file, behind header and description. */
    QByteArray savedRecords() const { return m_fixture->content(u"shot.vesk"_s).mid(4096); }

private slots:
    void init()
    {
        m_fixture = std::make_unique<SaveSourceFixture>();
        m_chunks.clear();
    }

    void cleanup() { m_fixture.reset(); }

    void oneRequestAsksForTheWholeRange()
    {
        m_fixture->holdFrames();
        save(12);
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        const auto requests = m_fixture->server.requests("POST", "/xfer");
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().body, QByteArray(R"({"type":3,"src":0,"take":3,"start":-5,"cnt":12})"));
        QCOMPARE(requests.first().headers.combinedValue("user-agent"), QByteArray("Vesk 1.0"));
    }

    void frameThatHasArrivedInPartWaitsForItsRest()
    {
        beginAnswer(2);
        const QByteArray records = SaveSourceFixture::records(2);
        m_fixture->server.stream(records.first(24));
        QTRY_COMPARE(m_chunks.size(), 1);
        m_fixture->server.stream(records.sliced(24));
        m_fixture->server.endStream();
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        const QList<Chunk> expected{{records.first(16), 1, 1, 1}, {records.sliced(16), 1, 2, 0}};
        QCOMPARE(m_chunks, expected);
        QCOMPARE(savedRecords(), records);
    }

    void dataThatCompletesNoFrameIsNoChunk()
    {
        beginAnswer(1);
        const QByteArray record = SaveSourceFixture::records(1);
        m_fixture->server.stream(record.first(15));
        QTRY_VERIFY(isTransferring());
        QSignalSpy data(reader(), &AbstractTakeReader::readyRead);
        QVERIFY(!data.wait(100));
        m_fixture->server.stream(record.last(1));
        m_fixture->server.endStream();
        QTRY_COMPARE(m_chunks.size(), 1);
        QCOMPARE(m_chunks.first().data, record);
    }

    void everyWholeFrameThatIsThereIsOneChunk()
    {
        const QByteArray records = SaveSourceFixture::records(15);
        m_fixture->answerFrames(records);
        save(15);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        qlonglong read = 0;
        QByteArray all;
        for (const Chunk &chunk : m_chunks) {
            read += chunk.frames;
            all += chunk.data;
            QCOMPARE(chunk.data.size(), chunk.frames * 16);
            QCOMPARE(chunk.read, read);
            QCOMPARE(chunk.remaining, 15 - read);
        }
        QCOMPARE(m_chunks.last().remaining, 0);
        QCOMPARE(all, records);
        QCOMPARE(savedRecords(), records);
    }

    void saveOfOneFrameIsOneLastChunk()
    {
        m_fixture->answerFrames(SaveSourceFixture::records(1));
        save(1);
        auto *writer = qobject_cast<FileSaveJob *>(m_job)->writer();
        QSignalSpy written(writer, &VeskWriter::framesWrittenChanged);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(m_chunks, QList<Chunk>({{SaveSourceFixture::records(1), 1, 1, 0}}));
        QCOMPARE(written.count(), 1);
        QCOMPARE(writer->framesWritten(), 1);
        QCOMPARE(m_job->progress(), 100.0);
    }

    void olderHeadersAreReadWhereTheNewerAreMissing_data()
    {
        QTest::addColumn<QByteArray>("imgSize"); // empty: no such header
        QTest::addColumn<QByteArray>("frSize");
        QTest::newRow("older alone") << QByteArray() << QByteArray("8");
        QTest::newRow("both") << QByteArray("8") << QByteArray("1000");
    }

    void olderHeadersAreReadWhereTheNewerAreMissing()
    {
        QFETCH(QByteArray, imgSize);
        QFETCH(QByteArray, frSize);
        QHttpHeaders headers;
        headers.append("Meta-Size", "8");
        headers.append("Fr-Size", frSize);
        if (!imgSize.isEmpty())
            headers.append("Img-Size", imgSize);
        m_fixture->answerFrames(SaveSourceFixture::records(3), headers);
        save(3);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(savedRecords(), SaveSourceFixture::records(3));
    }

    void answerWithoutAFrameSizeIsAbortedAndLeavesTheJobToTheOperator_data()
    {
        QTest::addColumn<QHttpHeaders>("headers");
        QTest::newRow("no headers") << QHttpHeaders();
        QTest::newRow("both 0") << SaveSourceFixture::frameHeaders("0", "0");
        QTest::newRow("no numbers") << SaveSourceFixture::frameHeaders("x", "-1");
        QTest::newRow("beyond any camera") << SaveSourceFixture::frameHeaders("4294967295", "4294967295");
        QTest::newRow("too large for a number") << SaveSourceFixture::frameHeaders("4294967296", "0");
    }

    void answerWithoutAFrameSizeIsAbortedAndLeavesTheJobToTheOperator()
    {
        QFETCH(QHttpHeaders, headers);
        m_fixture->answerFrames(SaveSourceFixture::records(3), headers);
        save(3);
        QTRY_COMPARE(reader()->error(), u"bad frame size"_s);
        QTRY_VERIFY(!isTransferring());
        QCOMPARE(m_job->state(), SaveJob::Saving);
        QVERIFY(m_chunks.isEmpty());
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void refusalEndsTheSaveInTheCamerasWordsOrWithItsNumber_data()
    {
        QTest::addColumn<Status>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error");
        const Status broken = Status::InternalServerError;
        QTest::newRow("404, nothing more") << Status::NotFound << QByteArray() << "HTTP 404";
        QTest::newRow("404 in words")
            << Status::NotFound << QByteArray(R"({"error":"no such take"})") << "no such take";
        QTest::newRow("500 in words")
            << broken << QByteArray(R"({"a":1,"error":"memory fault"})") << "memory fault";
        QTest::newRow("500, no JSON") << broken << QByteArray("<html>") << "HTTP 500";
        QTest::newRow("500, error is no text") << broken << QByteArray(R"({"error":5})") << "HTTP 500";
        QTest::newRow("500, an array") << broken << QByteArray(R"(["error"])") << "HTTP 500";
        QTest::newRow("500, long") << broken << QByteArray(8 * 1024 * 1024, 'x') << "HTTP 500";
    }

    void refusalEndsTheSaveInTheCamerasWordsOrWithItsNumber()
    {
        QFETCH(Status, status);
        QFETCH(QByteArray, body);
        m_fixture->answerFrames(body, SaveSourceFixture::frameHeaders(), status);
        save(3);
        QTRY_COMPARE(m_job->state(), SaveJob::Error);
        QTEST(m_job->error(), "error");
        QVERIFY(m_chunks.isEmpty());
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
        QTRY_VERIFY(!isTransferring());
    }

    void answerThatIsNoRefusalAndNoFramesLeavesTheJobToTheOperator_data()
    {
        QTest::addColumn<Status>("status");
        QTest::newRow("nothing to tell") << Status::NoContent;
        QTest::newRow("somewhere else") << Status::Found;
    }

    void answerThatIsNoRefusalAndNoFramesLeavesTheJobToTheOperator()
    {
        QFETCH(Status, status);
        m_fixture->answerFrames({}, SaveSourceFixture::frameHeaders(), status);
        save(3);
        QTRY_VERIFY(isTransferring());
        QTRY_VERIFY(!isTransferring());
        QCOMPARE(m_job->state(), SaveJob::Saving);
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
    }

    void answerThatEndsEarlyLeavesTheJobToTheOperator_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::newRow("a frame is missing") << 32;
        QTest::newRow("a part of a frame at the end") << 40;
        QTest::newRow("nothing") << 0;
    }

    void answerThatEndsEarlyLeavesTheJobToTheOperator()
    {
        QFETCH(const int, bytes);
        const QByteArray records = SaveSourceFixture::records(3).first(bytes);
        m_fixture->answerFrames(records);
        save(3);
        QTRY_VERIFY(isTransferring());
        QTRY_VERIFY(!isTransferring());
        QTRY_COMPARE(savedRecords(), records.first(bytes / 16 * 16));
        QCOMPARE(m_job->state(), SaveJob::Saving);
        QCOMPARE(m_job->error(), QString());
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void moreFramesThanWereAskedForAreNotSaved()
    {
        m_fixture->answerFrames(SaveSourceFixture::records(9));
        save(4);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(savedRecords(), SaveSourceFixture::records(4));
        QTRY_VERIFY(!isTransferring());
    }

    void answerThatGoesOnWithoutEndIsClosedBehindTheLastFrame()
    {
        // More than the connection holds.
        m_fixture->answerFrames(SaveSourceFixture::records(4) + QByteArray(16 * 1024 * 1024, 'x'));
        save(4);
        QTRY_COMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(savedRecords(), SaveSourceFixture::records(4));
        QTRY_VERIFY(!isTransferring());
    }

    void recordsOfAnotherSizeThanTheTakesAreNoCompleteSave_data()
    {
        QTest::addColumn<QByteArray>("imgSize"); // the take's is 8
        QTest::addColumn<Util::Format>("format");
        QTest::newRow("native, smaller") << QByteArray("0") << Util::FormatVesk;
        QTest::newRow("native, larger") << QByteArray("24") << Util::FormatVesk;
        QTest::newRow("images, smaller") << QByteArray("0") << Util::FormatTiff;
        QTest::newRow("images, larger") << QByteArray("24") << Util::FormatTiff;
    }

    void recordsOfAnotherSizeThanTheTakesAreNoCompleteSave()
    {
        QFETCH(const QByteArray, imgSize);
        QFETCH(const Util::Format, format);
        m_fixture->answerFrames(SaveSourceFixture::records(8), SaveSourceFixture::frameHeaders(imgSize));
        SaveJob *job = m_fixture->save(format, 0, 4);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
    }

    void cancelBeforeAnyDataClosesTheConnectionWithTheFirst()
    {
        beginAnswer(3);
        m_job->cancel();
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QVERIFY(isTransferring());
        m_fixture->server.stream(SaveSourceFixture::records(1));
        QTRY_VERIFY(!isTransferring());
        QCOMPARE(m_job->error(), QString());
        QVERIFY(m_chunks.isEmpty());
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void cancelInTheMiddleRemovesTheFile()
    {
        beginAnswer(3);
        m_fixture->server.stream(SaveSourceFixture::records(2));
        QTRY_COMPARE(savedRecords(), SaveSourceFixture::records(2));
        m_job->cancel();
        m_fixture->server.stream(SaveSourceFixture::records(1));
        m_fixture->server.endStream();
        QTRY_VERIFY(!isTransferring());
        QCOMPARE(m_job->state(), SaveJob::Cancelled);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void takeThatGoesInTheMiddleEndsTheSaveWithItsOwnWords()
    {
        beginAnswer(3);
        m_fixture->server.stream(SaveSourceFixture::records(2));
        QTRY_COMPARE(savedRecords(), SaveSourceFixture::records(2));
        m_fixture->take->setSavedOpened(false, false, false);
        QCOMPARE(m_job->state(), SaveJob::Error);
        QCOMPARE(m_job->error(), u"take deleted or closed"_s);
        QCOMPARE(qobject_cast<FileSaveJob *>(m_job)->writer()->error(), QString());
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
    }

    void cameraThatGoesInTheMiddleEndsTheSaveWithItsOwnWords()
    {
        beginAnswer(3);
        m_fixture->server.stream(SaveSourceFixture::records(2));
        QTRY_COMPARE(savedRecords(), SaveSourceFixture::records(2));
        m_fixture->camera.reset();
        QCOMPARE(m_job->state(), SaveJob::Error);
        QCOMPARE(m_job->error(), u"camera disconnected"_s);
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
    }

    void savesThatWaitForATakeThatGoesAskForNothingAndLeaveNoFile()
    {
        beginAnswer(3);
        QList<SaveJob *> waiting;
        for (int i = 0; i < 2; ++i)
            waiting.append(m_fixture->save(Util::FormatVesk, 0, 2));
        m_fixture->take->setSavedOpened(false, false, false);
        for (const SaveJob *job : waiting) {
            QCOMPARE(job->state(), SaveJob::Error);
            QCOMPARE(job->error(), u"take deleted or closed"_s);
        }
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
        QCOMPARE(m_fixture->camera->fileSaveJobQueue()->activeSaveJob(), nullptr);
    }

    void saveThatWaitedForATakeThatIsNoMoreSaysSo()
    {
        beginAnswer(1);
        SaveJob *waiting = m_fixture->save(Util::FormatTiff, 0, 2);
        delete m_fixture->take;
        QCOMPARE(waiting->state(), SaveJob::Queued);
        m_fixture->server.stream(SaveSourceFixture::records(1));
        QTRY_COMPARE(waiting->state(), SaveJob::Error);
        QCOMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(waiting->error(), u"take deleted or closed"_s);
    }

    void secondSaveBeginsWhenTheFirstHasEnded()
    {
        m_fixture->answerFrames(SaveSourceFixture::records(2));
        save(2);
        SaveJob *second = m_fixture->save(Util::FormatVesk, 0, 2);
        QCOMPARE(second->state(), SaveJob::Queued);
        QTRY_COMPARE(second->state(), SaveJob::Done);
        QCOMPARE(m_job->error(), QString());
        QCOMPARE(m_job->state(), SaveJob::Done);
        QCOMPARE(m_fixture->files(), QStringList({u"shot (2).vesk"_s, u"shot.vesk"_s}));
        QCOMPARE(m_fixture->camera->fileSaveJobQueue()->activeSaveJob(), nullptr);
    }
};

VESK_TEST_MAIN(TestAbstractTakeReader)
#include "tst_abstract_take_reader.moc"
