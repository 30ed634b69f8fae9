#include "tests/save/save_source_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <QRegularExpression>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/** A job whose work the test does. */
class HandWorkedJob : public SaveJob
{
public:
    HandWorkedJob(Take *take, bool starts, const QString &name = u"n"_s)
        : SaveJob(take, 2, 5, {}, FileNameTemplate(u"/f"_s, name, Util::FormatVesk, 2), nullptr),
          m_starts(starts)
    {
    }

    using SaveJob::cancel;
    void cancel(FinishState state) override
    {
        calls.append(u"cancel %1"_s.arg(state));
        finish(state);
        setError(u"text of the cancel"_s);
    }
    void open() override {}

    QStringList calls;

protected:
    bool doStart() override
    {
        calls.append(u"start"_s);
        if (!m_starts)
            finish(FinishError);
        return m_starts;
    }
    void doFinish(FinishState state) override { calls.append(u"finish %1"_s.arg(state)); }

private:
    bool m_starts;
};

/** One job's properties and states, what it does when its source or camera goes, and the queue of jobs. */
class TestSaveJob : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SaveSourceFixture> m_fixture;
    Take *m_take = nullptr;
    SaveJobQueue *m_queue = nullptr;

private slots:
    void init()
    {
        m_fixture = std::make_unique<SaveSourceFixture>();
        m_take = m_fixture->take;
        m_queue = m_fixture->camera->fileSaveJobQueue();
    }

    void cleanup() { m_fixture.reset(); }

    void newJobTellsWhatItSaves()
    {
        const HandWorkedJob job(m_take, true, u"a<fr:3>"_s);
        QCOMPARE(job.source(), m_take);
        QCOMPARE(job.queue(), m_queue);
        QCOMPARE(job.sourceType(), SaveJob::TakeSourceType);
        QCOMPARE(job.sourceCameraName(), u"Cam"_s);
        QCOMPARE(job.sourceTakeId(), 3);
        QCOMPARE(job.sourceFileName(), QString());
        QCOMPARE(job.startFr(), 2);
        QCOMPARE(job.frCnt(), 5);
        QCOMPARE(job.dest(), SaveJob::FileDest);
        QCOMPARE(job.fileName(), u"a002"_s);
        QCOMPARE(job.fileExt(), u"vesk"_s);
        QCOMPARE(job.state(), SaveJob::Queued);
        QCOMPARE(job.progress(), 0.0);
        QCOMPARE(job.error(), QString());
    }

    void startMakesTheJobSave()
    {
        HandWorkedJob job(m_take, true);
        QSignalSpy changed(&job, &SaveJob::stateChanged);
        QVERIFY(job.start());
        QCOMPARE(job.state(), SaveJob::Saving);
        QCOMPARE(changed.count(), 1);
    }

    void startThatFailsLeavesTheStateThatTheFailureMade()
    {
        HandWorkedJob job(m_take, false);
        QVERIFY(!job.start());
        QCOMPARE(job.state(), SaveJob::Error);
    }

    void endMakesTheFinalState_data()
    {
        QTest::addColumn<SaveJob::FinishState>("end");
        QTest::addColumn<SaveJob::State>("state");
        QTest::addColumn<double>("progress");
        QTest::newRow("done") << SaveJob::FinishDone << SaveJob::Done << 100.0;
        QTest::newRow("cancelled") << SaveJob::FinishCancelled << SaveJob::Cancelled << 40.0;
        QTest::newRow("error") << SaveJob::FinishError << SaveJob::Error << 40.0;
    }

    void endMakesTheFinalState()
    {
        QFETCH(SaveJob::FinishState, end);
        HandWorkedJob job(m_take, true);
        job.start();
        job.setProgress(40.0);
        QSignalSpy finished(&job, &SaveJob::finished);
        job.finish(end);
        QTEST(job.state(), "state");
        QTEST(job.progress(), "progress");
        QCOMPARE(finished.count(), 1);
        QCOMPARE(job.calls.last(), u"finish %1"_s.arg(end));
    }

    void progressThatIsFullAlreadyTellsNoSecondTime()
    {
        HandWorkedJob job(m_take, true);
        job.start();
        job.setProgress(100.0);
        QSignalSpy changed(&job, &SaveJob::progressChanged);
        job.finish(SaveJob::FinishDone);
        QCOMPARE(changed.count(), 0);
    }

    void errorAndStateTellOnlyChanges()
    {
        HandWorkedJob job(m_take, true);
        QSignalSpy error(&job, &SaveJob::errorChanged);
        QSignalSpy state(&job, &SaveJob::stateChanged);
        job.setError(u"x"_s);
        job.setError(u"x"_s);
        job.setState(SaveJob::QueuedFW);
        job.setState(SaveJob::QueuedFW);
        QCOMPARE(error.count(), 1);
        QCOMPARE(state.count(), 1);
    }

    void newFileNameIsReadWithItsTagsAndToldAlways()
    {
        HandWorkedJob job(m_take, true);
        QSignalSpy changed(&job, &SaveJob::fileNameChanged);
        job.setFileName(u"b_<fr>"_s);
        QCOMPARE(job.fileName(), u"b_2"_s);
        job.setFileName(u"b_<fr>"_s);
        QCOMPARE(changed.count(), 2);
    }

    void newExtensionIsToldButTheFormatKeepsItsOwn()
    {
        HandWorkedJob job(m_take, true);
        QSignalSpy changed(&job, &SaveJob::fileExtChanged);
        job.setFileExt(u"doc"_s);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(job.fileExt(), u"vesk"_s);
    }

    void destroyedSourceIsForgottenAndNothingElse()
    {
        HandWorkedJob job(m_take, true);
        job.start();
        delete m_take;
        QCOMPARE(job.source(), nullptr);
        QCOMPARE(job.state(), SaveJob::Saving);
        QCOMPARE(job.error(), QString());
    }

    void lossOfTheCameraEndsAJobWithItsOwnWords_data()
    {
        QTest::addColumn<bool>("saving");
        QTest::newRow("saving") << true;
        QTest::newRow("queued") << false;
    }

    void lossOfTheCameraEndsAJobWithItsOwnWords()
    {
        QFETCH(const bool, saving);
        HandWorkedJob job(m_take, true);
        if (saving)
            job.start();
        m_fixture->camera.reset();
        QCOMPARE(job.state(), SaveJob::Error);
        QCOMPARE(job.error(), u"camera disconnected"_s);
        QCOMPARE(job.queue(), nullptr);
        QCOMPARE(job.source(), nullptr);
        QCOMPARE(job.calls.contains(u"cancel 2"_s), saving);
    }

    void lossOfTheCameraEndsTheJobsOfItsQueueAndStartsNone()
    {
        HandWorkedJob active(m_take, true);
        HandWorkedJob waiting(m_take, true);
        m_queue->enqueue(&active);
        m_queue->enqueue(&waiting);
        m_fixture->camera.reset();
        QCOMPARE(active.error(), u"camera disconnected"_s);
        QCOMPARE(waiting.error(), u"camera disconnected"_s);
        QVERIFY(waiting.calls.isEmpty());
    }

    void deletedTakeEndsTheJobThatSavesIt()
    {
        HandWorkedJob job(m_take, true);
        job.start();
        m_take->setSavedOpened(false, false, false);
        QCOMPARE(job.state(), SaveJob::Error);
        QCOMPARE(job.error(), u"take deleted or closed"_s);
        QCOMPARE(job.source(), nullptr);
        QCOMPARE(job.calls, QStringList({u"start"_s, u"cancel 2"_s, u"finish 2"_s}));
    }

    void deletedTakeTakesAWaitingJobOutOfTheQueue()
    {
        auto *other = new Take(4, m_fixture->camera.get());
        HandWorkedJob active(other, true);
        HandWorkedJob waiting(m_take, true);
        m_queue->enqueue(&active);
        m_queue->enqueue(&waiting);
        m_take->setSavedOpened(false, false, false);
        QCOMPARE(waiting.state(), SaveJob::Error);
        QCOMPARE(waiting.error(), u"take deleted or closed"_s);
        QVERIFY(m_queue->pending().isEmpty());
        QCOMPARE(m_queue->activeSaveJob(), &active);
        active.finish(SaveJob::FinishDone);
        QVERIFY(waiting.calls.isEmpty());
    }

    void endedJobDoesNotCareForItsSourceAndCamera()
    {
        HandWorkedJob job(m_take, true);
        job.start();
        job.finish(SaveJob::FinishDone);
        m_take->setSavedOpened(false, false, false);
        m_fixture->camera.reset();
        QCOMPARE(job.state(), SaveJob::Done);
        QCOMPARE(job.error(), QString());
    }

    void queueRunsOneJobAfterTheOther()
    {
        HandWorkedJob first(m_take, true);
        HandWorkedJob second(m_take, true);
        HandWorkedJob third(m_take, true);
        QSignalSpy changed(m_queue, &SaveJobQueue::activeSaveJobChanged);
        for (SaveJob *job : {&first, &second, &third})
            m_queue->enqueue(job);
        QCOMPARE(m_queue->activeSaveJob(), &first);
        QCOMPARE(m_queue->pending(), QList<SaveJob *>({&second, &third}));
        QCOMPARE(changed.count(), 1);
        first.finish(SaveJob::FinishError);
        QCOMPARE(m_queue->activeSaveJob(), &second);
        QCOMPARE(changed.count(), 3); // idle between the two
        second.finish(SaveJob::FinishDone);
        third.finish(SaveJob::FinishCancelled);
        QCOMPARE(m_queue->activeSaveJob(), nullptr);
    }

    void jobThatDoesNotStartIsPassedOverAndStaysInError()
    {
        HandWorkedJob first(m_take, true);
        HandWorkedJob second(m_take, false);
        HandWorkedJob third(m_take, true);
        for (SaveJob *job : {&first, &second, &third})
            m_queue->enqueue(job);
        first.finish(SaveJob::FinishDone);
        QCOMPARE(second.state(), SaveJob::Error);
        QCOMPARE(third.state(), SaveJob::Saving);
        QCOMPARE(m_queue->activeSaveJob(), &third);
    }

    void jobsThatDoNotStartLeaveTheQueueIdle()
    {
        HandWorkedJob first(m_take, true);
        HandWorkedJob second(m_take, false);
        HandWorkedJob third(m_take, false);
        for (SaveJob *job : {&first, &second, &third})
            m_queue->enqueue(job);
        first.finish(SaveJob::FinishDone);
        QCOMPARE(m_queue->activeSaveJob(), nullptr);
        QVERIFY(m_queue->pending().isEmpty());
    }

    void removedJobIsNotStarted()
    {
        HandWorkedJob first(m_take, true);
        HandWorkedJob second(m_take, true);
        m_queue->enqueue(&first);
        m_queue->remove(&second);
        m_queue->remove(nullptr);
        m_queue->enqueue(&second);
        m_queue->remove(&second);
        first.finish(SaveJob::FinishDone);
        QVERIFY(second.calls.isEmpty());
        QCOMPARE(m_queue->activeSaveJob(), nullptr);
    }

    void logTellsHowJobsStartAndEnd()
    {
        const auto expect = [](const char *signature) {
            QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QLatin1StringView(signature)));
        };
        HandWorkedJob job(m_take, true);
        for (const char *signature :
             {"^void SaveJobQueue::enqueue\\(SaveJob ?\\*\\)$",
              "^void SaveJobQueue::startSaveJob\\(SaveJob ?\\*\\)$", "^bool SaveJob::start\\(\\)$"})
            expect(signature);
        m_queue->enqueue(&job);
        for (const char *signature :
             {"^void SaveJobQueue::finishSaveJob\\(\\)$", "^void SaveJobQueue::startQueuedSaveJob\\(\\)$"})
            expect(signature);
        job.finish(SaveJob::FinishDone);
        expect("^SaveManager::SaveManager\\(QObject ?\\*\\)$");
        const SaveManager manager(nullptr);
    }

    void cameraAndTakesHoldTheirFramesBackWhileAJobRuns()
    {
        m_take->setSelected(true);
        QCOMPARE(m_take->requestFrame(), 0);
        auto *other = new Take(4, m_fixture->camera.get());
        other->setSavedOpened(true, false, true);
        other->setSelected(true);
        m_fixture->camera->setSelected(true);
        HandWorkedJob job(m_take, true);
        m_queue->enqueue(&job);
        QCOMPARE(m_fixture->camera->requestFrame(), -1);
        QCOMPARE(other->requestFrame(), -1);
        job.finish(SaveJob::FinishDone);
        QCOMPARE(m_fixture->camera->requestFrame(), 0);
        QCOMPARE(other->requestFrame(), 0);
    }
};

VESK_TEST_MAIN(TestSaveJob)
#include "tst_save_job.moc"
