#include "app/qml_object_list_model.h"
#include "tests/save/save_source_fixture.h"
#include "tests/support/playback_source.h"
#include "tests/support/vesk_test_main.h"

#include <QPointer>
#include <QSignalSpy>

#include <limits>

using namespace Qt::StringLiterals;

/** Which jobs are made of what the operator asks for, and how they leave the list. */
class TestSaveManager : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SaveSourceFixture> m_fixture;

    QQmlObjectListModelBase *list() const { return m_fixture->manager->saveJobs(); }
    void setSizes(const QString &res, int metaSize)
    {
        m_fixture->take->updateValues(
            {{"acq", QJsonObject{{"res", res}}}, {"meta", QJsonObject{{"size", metaSize}}}});
    }
    SaveJob *create(PlaybackVeskObject *source, int dest, int format)
    {
        return m_fixture->manager->createSaveJob(source, 0, 2, SaveManager::SaveDest(dest),
                                                 Util::Format(format), Util::CodecRaw_BGR24, 30.0, 15,
                                                 u"shot"_s, m_fixture->folder.path());
    }

private slots:
    void init() { m_fixture = std::make_unique<SaveSourceFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void applicationHasTheOneManager()
    {
        auto *manager = VeskApp::instance()->property("saveManager").value<SaveManager *>();
        QVERIFY(manager);
        QCOMPARE(manager, VeskApp::instance()->saveManager());
        QCOMPARE(manager->saveJobs()->size(), 0);
    }

    void nativeFileJobIsListedAndQueued()
    {
        m_fixture->holdFrames();
        SaveJob *job = create(m_fixture->take, 0, Util::FormatVesk);
        QVERIFY(job);
        QCOMPARE(list()->get(0), job);
        QCOMPARE(job->parent(), m_fixture->manager);
        QCOMPARE(m_fixture->camera->fileSaveJobQueue()->activeSaveJob(), job);
        QCOMPARE(job->state(), SaveJob::Saving);
        QCOMPARE(job->format(), Util::FormatVesk);
        QCOMPARE(job->codec(), Util::CodecVesk);
        QCOMPARE(job->frameRate(), 0.0);
        QCOMPARE(job->quality(), 0);
        QCOMPARE(job->fileName(), u"shot"_s);
    }

    void imageJobHasItsOwnCodecWhateverWasAsked()
    {
        m_fixture->holdFrames();
        SaveJob *job = create(m_fixture->take, 0, Util::FormatTiff);
        QVERIFY(job);
        QCOMPARE(job->format(), Util::FormatTiff);
        QCOMPARE(job->codec(), Util::CodecRaw_RGB24);
        QCOMPARE(job->frameRate(), 0.0);
        QCOMPARE(job->quality(), 0);
        QCOMPARE(job->fileExt(), u"tiff"_s);
    }

    void whatNothingCanBeMadeOfGivesNoJob_data()
    {
        QTest::addColumn<int>("dest");
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("source"); // 0 none, 1 a take, 2 a source of another kind
        QTest::newRow("no source") << 0 << 0 << 0;
        QTest::newRow("another source") << 0 << 0 << 2;
        QTest::newRow("unknown format") << 0 << 4 << 1;
        QTest::newRow("negative format") << 0 << -1 << 1;
        QTest::newRow("unknown destination") << 2 << 0 << 1;
    }

    void whatNothingCanBeMadeOfGivesNoJob()
    {
        QFETCH(int, dest);
        QFETCH(int, format);
        QFETCH(int, source);
        PlaybackSource another;
        PlaybackVeskObject *const sources[] = {nullptr, m_fixture->take, &another};
        QCOMPARE(create(sources[source], dest, format), nullptr);
        QCOMPARE(list()->size(), 0);
    }

    void jobsAreListedInTheOrderOfTheirCreation()
    {
        m_fixture->holdFrames();
        QList<QObject *> jobs;
        for (int i = 0; i < 3; ++i)
            jobs.append(create(m_fixture->take, 0, Util::FormatVesk));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(list()->get(i), jobs[i]);
        QCOMPARE(m_fixture->camera->fileSaveJobQueue()->pending().size(), 2);
    }

    void failedJobStaysListedBetweenTwoGoodOnes()
    {
        m_fixture->answerFrames(SaveSourceFixture::records(2));
        m_fixture->holdFrames();
        const SaveJob *first = m_fixture->save(Util::FormatVesk, -5, 2, u"first"_s);
        const SaveJob *second = m_fixture->save(Util::FormatVesk, -5, 2, u"gone/second"_s);
        const SaveJob *third = m_fixture->save(Util::FormatVesk, -5, 2, u"third"_s);
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        QCOMPARE(second->state(), SaveJob::Queued);
        m_fixture->server.release();
        QTRY_COMPARE(third->state(), SaveJob::Done);
        QCOMPARE(first->state(), SaveJob::Done);
        QCOMPARE(second->state(), SaveJob::Error);
        QCOMPARE(second->error(), u"can't open file for writing"_s);
        QCOMPARE(list()->size(), 3);
        QCOMPARE(list()->get(1), second);
        QCOMPARE(m_fixture->files(), QStringList({u"first.vesk"_s, u"third.vesk"_s}));
    }

    void removalOfAWaitingJobTakesItFromListAndQueueAndDeletesItLater()
    {
        m_fixture->holdFrames();
        create(m_fixture->take, 0, Util::FormatVesk);
        QPointer<SaveJob> waiting = create(m_fixture->take, 0, Util::FormatVesk);
        m_fixture->manager->removeSaveJob(waiting);
        QCOMPARE(list()->size(), 1);
        QVERIFY(m_fixture->camera->fileSaveJobQueue()->pending().isEmpty());
        QVERIFY(waiting);
        QTRY_VERIFY(!waiting);
    }

    void runningJobCannotBeRemoved_data()
    {
        QTest::addColumn<SaveJob::State>("state");
        QTest::newRow("saving") << SaveJob::Saving;
        QTest::newRow("queued by the camera") << SaveJob::QueuedFW;
    }

    void runningJobCannotBeRemoved()
    {
        QFETCH(const SaveJob::State, state);
        m_fixture->holdFrames();
        SaveJob *job = create(m_fixture->take, 0, Util::FormatVesk);
        job->setState(state);
        m_fixture->manager->removeSaveJob(job);
        m_fixture->manager->removeSaveJob(nullptr);
        QCOMPARE(list()->get(0), job);
        QCOMPARE(job->state(), state);
    }

    void endedJobIsRemoved_data()
    {
        QTest::addColumn<SaveJob::State>("state");
        QTest::newRow("done") << SaveJob::Done;
        QTest::newRow("cancelled") << SaveJob::Cancelled;
        QTest::newRow("error") << SaveJob::Error;
    }

    void endedJobIsRemoved()
    {
        QFETCH(const SaveJob::State, state);
        m_fixture->holdFrames();
        QPointer<SaveJob> job = create(m_fixture->take, 0, Util::FormatVesk);
        job->cancel();
        job->setState(state);
        m_fixture->manager->removeSaveJob(job);
        QCOMPARE(list()->size(), 0);
        QTRY_VERIFY(!job);
    }

    void managerThatGoesEndsWhatRuns()
    {
        m_fixture->holdFrames();
        QPointer<SaveJob> job = create(m_fixture->take, 0, Util::FormatVesk);
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        delete m_fixture->manager;
        m_fixture->manager = nullptr;
        QVERIFY(!job);
        QVERIFY(QFile::exists(m_fixture->path(u"shot.vesk"_s)));
    }

    void estimateFollowsFormatAndSize_data()
    {
        QTest::addColumn<QString>("res");
        QTest::addColumn<int>("metaSize");
        QTest::addColumn<qlonglong>("frCnt");
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("codec");
        QTest::addColumn<qlonglong>("bytes");
        const int avi = Util::FormatAvi;
        QTest::newRow("native") << "640x480" << 32 << 10LL << 0 << 0 << 3076416LL; // 307232 * 10 + 4096
        QTest::newRow("native without x") << "640X480" << 32 << 10LL << 0 << 0 << 4416LL;
        QTest::newRow("native of three numbers") << "6x4x2" << 32 << 1LL << 0 << 0 << 4128LL;
        QTest::newRow("empty parts are dropped") << "x6xx4x" << 0 << 1LL << 0 << 0 << 4120LL;
        QTest::newRow("native too wide") << "65536x4" << 8 << 2LL << 0 << 0 << 4112LL;
        QTest::newRow("native negative") << "-1x4" << 8 << 2LL << 0 << 0 << 4112LL;
        QTest::newRow("AVI in colour") << "640x480" << 32 << 10LL << avi << 1 << 9216000LL;
        QTest::newRow("AVI in gray") << "640x480" << 32 << 10LL << avi << 3 << 3072000LL;
        QTest::newRow("AVI as images") << "640x480" << 32 << 10LL << avi << 2 << 3072000LL;
        QTest::newRow("MP4") << "640x480" << 32 << 10LL << int(Util::FormatMp4) << 6 << 0LL;
        // (307200 + 68) * 3 * 10
        QTest::newRow("images") << "640x480" << 32 << 10LL << int(Util::FormatTiff) << 2 << 9218040LL;
        QTest::newRow("images whatever the codec")
            << "640x480" << 32 << 10LL << int(Util::FormatTiff) << 6 << 9218040LL;
        QTest::newRow("unknown format") << "640x480" << 32 << 10LL << 9 << 0 << 0LL;
        // 65535 * 65535 + 131071 = 2^32, which is 0 in 32 bits
        QTest::newRow("native beyond 32 bits") << "65535x65535" << 131071 << 7LL << 0 << 0 << 4096LL;
        // a thousand million frames of 307232 bytes do not fit 32 bits
        QTest::newRow("many frames") << "640x480" << 32 << 1000000000LL << 0 << 0 << 307232000004096LL;
        // The range of a source that tells none yet goes from one end of the scale to the other.
        const qlonglong most = std::numeric_limits<qlonglong>::max();
        QTest::newRow("native of no range") << "640x480" << 32 << most << 0 << 0 << most;
        QTest::newRow("AVI of no range") << "640x480" << 32 << most << avi << 1 << most;
        QTest::newRow("images of no range") << "640x480" << 32 << most << int(Util::FormatTiff) << 2 << most;
    }

    void estimateFollowsFormatAndSize()
    {
        QFETCH(QString, res);
        QFETCH(int, metaSize);
        QFETCH(qlonglong, frCnt);
        QFETCH(int, format);
        QFETCH(int, codec);
        setSizes(res, metaSize);
        QTEST(
            m_fixture->manager->estFileSize(m_fixture->take, frCnt, Util::Format(format), Util::Codec(codec)),
            "bytes");
    }

    void estimateOfNoSourceIsNothing()
    {
        QCOMPARE(m_fixture->manager->estFileSize(nullptr, 10, Util::FormatVesk, Util::CodecVesk), 0);
    }
};

VESK_TEST_MAIN(TestSaveManager)
#include "tst_save_manager.moc"
