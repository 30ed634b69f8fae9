#include "tests/save/ssd_save_case.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>
#include <QTimer>

using namespace Qt::StringLiterals;

/** A save onto the drive at work, by newer and older firmware, to its good end or that of the drive. */
class TestSsdSaveProgress : public QObject, private SsdSaveCase
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { m_fixture.reset(); }

    void saveWaitsItsTurnInTheCamera()
    {
        // 3 of 5: two before it.
        SaveJob *job = answered();
        QVERIFY(job);
        QCOMPARE(job->state(), SaveJob::Saving);
        poll({{"progress", 40}});
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        QCOMPARE(job->progress(), 0.0);
        QCOMPARE(queue()->activeSaveJob(), job);
        poll({{"wr_seq", 4}, {"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Saving);
        poll({{"progress", 30}});
        QCOMPARE(job->progress(), 30.0);
        poll({{"progress", 99}});
        QCOMPARE(job->progress(), 99.0);
        QSignalSpy finished(job, &SaveJob::finished);
        poll({{"wr_seq", 5}, {"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->progress(), 100.0);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(queue()->activeSaveJob(), nullptr);
    }

    void saveMayFallBehindOthersAgain()
    {
        poll({{"wr_seq", 4}});
        SaveJob *job = answered();
        poll({{"progress", 10}});
        QCOMPARE(job->state(), SaveJob::Saving);
        poll({{"wr_seq", 2}});
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        QCOMPARE(job->progress(), 10.0);
        poll({{"wr_seq", 9}});
        QCOMPARE(job->state(), SaveJob::Done);
    }

    void saveThatEndsBeforeItsAnswerIsReadIsDone()
    {
        m_fixture->server.setHold(
            [](const HttpRecorder::Request &request) { return request.path == "/ssd-save"; });
        SaveJob *job = create();
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        poll({{"wr_seq", 5}, {"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Saving);
        QTest::ignoreMessage(QtDebugMsg, "m_seq= 5");
        QTest::ignoreMessage(QtDebugMsg, "wrSeq= 5");
        QTest::ignoreMessage(QtDebugMsg, "Save completed quickly");
        m_fixture->server.release();
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->progress(), 100.0);
    }

    void quickSaveOnADriveThatIsGoneFails()
    {
        poll({{"wr_seq", 5}, {"state", 0}});
        SaveJob *job = answered();
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"ssd.state = 0"_s);
    }

    void valuesThatChangeBeforeTheAnswerAreNotJudged()
    {
        m_fixture->server.setHold(
            [](const HttpRecorder::Request &request) { return request.path == "/ssd-save"; });
        SaveJob *job = create();
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        poll({{"progress", 50}, {"wr_seq", 4}});
        poll({{"state", 7}});
        poll({{"state", 3}});
        QCOMPARE(job->state(), SaveJob::Saving);
        QCOMPARE(job->progress(), 0.0);
    }

    void driveThatLeavesTheReadyStateFailsTheSave_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::addColumn<QJsonObject>("writing");
        QTest::addColumn<SaveJob::State>("before");
        QTest::addColumn<int>("state");
        const QJsonObject held = {{"wr_state", 1}, {"progress", 20}};
        const QJsonObject active = {{"wr_state", 1}, {"progress", 20}, {"wr_seq", 4}};
        for (const int state : {0, 1, 2, 4, 5, 6, 7, 8, 9}) {
            QTest::addRow("older: %d", state) << OldFirmware << held << SaveJob::Saving << state;
            QTest::addRow("newer: %d", state) << NewFirmware << active << SaveJob::Saving << state;
            QTest::addRow("held by the camera: %d", state)
                << NewFirmware << held << SaveJob::QueuedFW << state;
        }
    }

    void driveThatLeavesTheReadyStateFailsTheSave()
    {
        QFETCH(int, ssdSave);
        QFETCH(QJsonObject, writing);
        QFETCH(int, state);
        setFirmware(ssdSave);
        SaveJob *job = answered();
        poll(writing);
        QTEST(job->state(), "before");
        poll({{"state", state}});
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"ssd.state = %1"_s.arg(state));
        QCOMPARE(queue()->activeSaveJob(), nullptr);
    }

    void olderSaveIsOverWhenTheDriveIsIdleWithoutProgress()
    {
        setFirmware(OldFirmware);
        answerWith("{}");
        SaveJob *job = answered(QString());
        QCOMPARE(job->state(), SaveJob::Saving);
        QCOMPARE(job->fileName(), QString());
        poll({{"wr_state", 1}, {"progress", 1}});
        QCOMPARE(job->progress(), 1.0);
        poll({{"progress", 50}});
        QCOMPARE(job->progress(), 50.0);
        // Without progress, but still at work.
        poll({{"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Saving);
        QCOMPARE(job->progress(), 0.0);
        poll({{"progress", 99}});
        poll({{"wr_state", 0}, {"progress", 5}});
        QCOMPARE(job->state(), SaveJob::Saving);
        QSignalSpy finished(job, &SaveJob::finished);
        QTest::ignoreMessage(QtDebugMsg, "old fw short save condition");
        poll({{"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->progress(), 100.0);
        QCOMPARE(finished.count(), 1);
    }

    void olderSaveShorterThanAPollIsOverWithTheTimer()
    {
        setFirmware(OldFirmware);
        answerWith("{}");
        QTest::ignoreMessage(QtDebugMsg, "start old fw save timer");
        SaveJob *job = answered();
        auto *timer = job->findChild<QTimer *>();
        QVERIFY(timer && timer->isSingleShot());
        QCOMPARE(timer->interval(), 1000);
        QCOMPARE(job->state(), SaveJob::Saving);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->progress(), 100.0);
    }

    void olderSaveWhoseDriveIsNotReadyFailsWithTheTimer()
    {
        setFirmware(OldFirmware);
        answerWith("{}");
        SaveJob *job = create();
        m_fixture->camera->updateValues({{"ssd", QJsonObject{{"state", 7}}}}); // before the job looks at it
        QVERIFY(waitForAnswer());
        QCOMPARE(job->state(), SaveJob::Saving);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"ssd.state = 7"_s);
    }

    void lostCameraFailsAnOlderSaveWithTheTimer()
    {
        setFirmware(OldFirmware);
        answerWith("{}");
        SaveJob *job = answered();
        m_fixture->camera.reset();
        QCOMPARE(job->state(), SaveJob::Saving);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"camera disconnected"_s);
    }

    void timerDoesNotEndAnOlderSaveThatIsAtWork()
    {
        setFirmware(OldFirmware);
        answerWith("{}");
        SaveJob *job = answered();
        poll({{"wr_state", 1}});
        auto *timer = job->findChild<QTimer *>();
        QTRY_VERIFY(!timer->isActive());
        QCOMPARE(job->state(), SaveJob::Saving);
        poll({{"progress", 3}});
        poll({{"wr_state", 0}, {"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Done);
    }

    void lateTickOfTheTimerChangesNothing_data()
    {
        QTest::addColumn<int>("lastState");
        QTest::addColumn<SaveJob::State>("end");
        QTest::newRow("done") << 3 << SaveJob::Done;
        QTest::newRow("failed") << 7 << SaveJob::Error;
    }

    void lateTickOfTheTimerChangesNothing()
    {
        QFETCH(int, lastState);
        QFETCH(SaveJob::State, end);
        setFirmware(OldFirmware);
        answerWith("{}");
        SaveJob *job = answered();
        auto *timer = job->findChild<QTimer *>();
        poll({{"wr_state", 1}, {"progress", 20}});
        if (lastState == 3)
            poll({{"wr_state", 0}, {"progress", 0}});
        else
            poll({{"state", lastState}});
        QCOMPARE(job->state(), end);
        const QString error = job->error();
        const double progress = job->progress();
        // The drive as it would decide otherwise.
        if (lastState == 3)
            poll({{"state", 7}});
        else
            poll({{"state", 3}, {"wr_state", 0}, {"progress", 0}});
        QSignalSpy finished(job, &SaveJob::finished);
        QVERIFY(timer->isActive());
        QSignalSpy ticked(timer, &QTimer::timeout);
        QTRY_COMPARE(ticked.count(), 1);
        QCOMPARE(job->state(), end);
        QCOMPARE(job->error(), error);
        QCOMPARE(job->progress(), progress);
        QCOMPARE(finished.count(), 0);
    }

    void endedJobWatchesNothing_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::newRow("older") << OldFirmware;
        QTest::newRow("newer") << NewFirmware;
    }

    void endedJobWatchesNothing()
    {
        QFETCH(int, ssdSave);
        setFirmware(ssdSave);
        SaveJob *job = answered();
        poll({{"wr_state", 1}, {"progress", 20}});
        poll({{"wr_state", 0}, {"wr_seq", 5}, {"progress", 0}});
        QCOMPARE(job->state(), SaveJob::Done);
        QSignalSpy finished(job, &SaveJob::finished);
        poll({{"state", 7}, {"wr_seq", 6}, {"progress", 60}});
        QCOMPARE(finished.count(), 0);
        QCOMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->progress(), 100.0);
    }
};

VESK_TEST_MAIN(TestSsdSaveProgress)
#include "tst_ssd_save_progress.moc"
