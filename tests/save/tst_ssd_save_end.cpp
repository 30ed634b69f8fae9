#include "tests/save/ssd_save_case.h"
#include "tests/support/vesk_test_main.h"

#include <QPointer>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/** Saves onto the drive that are refused, wait for each other, or lose what they need. */
class TestSsdSaveEnd : public QObject, private SsdSaveCase
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { m_fixture.reset(); }

    void refusal_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<Status>("status");
        QTest::addColumn<QString>("error");
        for (const int ssdSave : {OldFirmware, NewFirmware}) {
            const auto row = [&](const char *name, const QByteArray &body, Status status,
                                 const QString &error) {
                QTest::addRow("firmware %d: %s", ssdSave, name) << ssdSave << body << status << error;
            };
            row("told", R"({"error":"the drive is full"})", Status::InsufficientStorage,
                u"the drive is full"_s);
            row("no text", R"({"error":5})", Status::Conflict, u"HTTP 409"_s);
            row("broken JSON", "{\"error\":\"x", Status::InternalServerError, u"HTTP 500"_s);
            row("empty", {}, Status::NotFound, u"HTTP 404"_s);
        }
    }

    void refusal()
    {
        QFETCH(int, ssdSave);
        QFETCH(QByteArray, body);
        QFETCH(Status, status);
        QFETCH(QString, error);
        setFirmware(ssdSave);
        answerWith(body, status);
        SaveJob *job = answered();
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), error);
        QCOMPARE(queue()->activeSaveJob(), nullptr);
        // What the drive does then is nothing to it.
        poll({{"state", 7}, {"progress", 50}});
        QCOMPARE(job->error(), error);
        QCOMPARE(job->progress(), 0.0);
    }

    void cameraThatIsNotThere()
    {
        m_fixture->server.setHold(
            [](const HttpRecorder::Request &request) { return request.path == "/ssd-save"; });
        SaveJob *job = create();
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        const auto replies = VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>();
        QCOMPARE(replies.size(), 1);
        replies[0]->abort();
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"HTTP 0"_s);
        m_fixture->server.release();
    }

    void saveCannotBeStopped()
    {
        SaveJob *job = answered();
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Saving);
        poll({{"progress", 1}});
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        job->cancel(SaveJob::FinishError);
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        m_fixture->manager->removeSaveJob(job);
        QCOMPARE(m_fixture->manager->saveJobs()->size(), 1);
    }

    void oneSaveAtATimeIsSent()
    {
        SaveJob *first = answered(u"a"_s);
        SaveJob *second = create(u"b"_s);
        SaveJob *third = create(u"c"_s);
        QCOMPARE(sent().size(), 1);
        QCOMPARE(second->state(), SaveJob::Queued);
        m_fixture->manager->removeSaveJob(third);
        answerWith(R"({"seq":6})");
        poll({{"wr_seq", 5}});
        QCOMPARE(first->state(), SaveJob::Done);
        QCOMPARE(second->state(), SaveJob::Saving);
        QTRY_COMPARE(sent().size(), 2);
        QVERIFY(waitForAnswer());
        poll({{"wr_seq", 6}});
        QCOMPARE(second->state(), SaveJob::Done);
        QCOMPARE(sent().size(), 2);
    }

    void refusedSaveLetsTheNextOneStart()
    {
        answerWith({}, Status::Conflict);
        SaveJob *first = create(u"a"_s);
        SaveJob *second = create(u"b"_s);
        QTRY_COMPARE(first->state(), SaveJob::Error);
        QTRY_COMPARE(second->state(), SaveJob::Error);
        QCOMPARE(sent().size(), 2);
        QCOMPARE(queue()->activeSaveJob(), nullptr);
    }

    void framesAreNotHeldBackMeanwhile()
    {
        SaveJob *job = answered();
        QCOMPARE(queue()->activeSaveJob(), job);
        m_fixture->take->setSelected(true);
        QCOMPARE(m_fixture->take->requestFrame(), 0);
        m_fixture->take->setSelected(false);
    }

    void deletedTakeEndsTheSaveWithTheNextChange_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::addColumn<bool>("queued");
        QTest::newRow("older") << OldFirmware << false;
        QTest::newRow("newer") << NewFirmware << false;
        QTest::newRow("held by the camera") << NewFirmware << true;
    }

    void deletedTakeEndsTheSaveWithTheNextChange()
    {
        QFETCH(int, ssdSave);
        QFETCH(bool, queued);
        setFirmware(ssdSave);
        SaveJob *job = answered();
        if (queued)
            poll({{"progress", 1}});
        SaveJob *next = create(u"next"_s);
        m_fixture->take->setSavedOpened(false, false, false);
        QCOMPARE(job->source(), nullptr);
        QCOMPARE(job->state(), queued ? SaveJob::Error : SaveJob::Saving);
        QCOMPARE(job->error(), u"take deleted or closed"_s);
        QCOMPARE(queue()->activeSaveJob(), job);
        QCOMPARE(next->state(), SaveJob::Error);
        QSignalSpy finished(job, &SaveJob::finished);
        poll({{"progress", 33}});
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"take deleted or closed"_s);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(queue()->activeSaveJob(), nullptr);
        poll({{"progress", 34}});
        QCOMPARE(finished.count(), 1);
    }

    void saveBehindOneWhoseTakeWentWaitsForTheCamera()
    {
        SaveJob *job = answered(u"a"_s);
        poll({{"progress", 1}});
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        auto *other = new Take(4, m_fixture->camera.get());
        other->setSavedOpened(true, false, true);
        QVERIFY(waitForAnswer());
        SaveJob *next = create(u"b"_s, other);
        m_fixture->take->setSavedOpened(false, false, false);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(next->state(), SaveJob::Queued);
        QVERIFY(waitForAnswer());
        QCOMPARE(sent().size(), 1);
        poll({{"progress", 2}});
        QCOMPARE(next->state(), SaveJob::Saving);
        QTRY_COMPARE(sent().size(), 2);
        delete other;
    }

    void takeThatGoesBeforeTheAnswerFailsTheSave()
    {
        m_fixture->server.setHold(
            [](const HttpRecorder::Request &request) { return request.path == "/ssd-save"; });
        SaveJob *job = create();
        QTRY_COMPARE(m_fixture->server.heldCount(), 1);
        m_fixture->take->setSavedOpened(false, false, false);
        m_fixture->server.release();
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"take deleted or closed"_s);
    }

    void jobThatIsRemovedWhileTheCameraHoldsItFreesTheQueue()
    {
        QPointer<SaveJob> job = answered();
        poll({{"progress", 1}});
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        m_fixture->take->setSavedOpened(false, false, false);
        m_fixture->take->setSavedOpened(true, false, true);
        SaveJob *next = create(u"next"_s);
        m_fixture->manager->removeSaveJob(job);
        QTRY_VERIFY(!job);
        QCOMPARE(queue()->activeSaveJob(), next);
        QCOMPARE(next->state(), SaveJob::Saving);
    }

    void lostPartitionFailsTheSaveWithTheNextChange()
    {
        SaveJob *job = answered();
        delete std::exchange(m_fixture->take, nullptr);
        QCOMPARE(job->source(), nullptr);
        QCOMPARE(job->state(), SaveJob::Saving);
        poll({{"progress", 2}});
        QCOMPARE(job->state(), SaveJob::Error);
    }

    void waitingJobWhosePartitionWentFailsInItsTurn()
    {
        SaveJob *first = answered(u"a"_s);
        auto *other = new Take(4, m_fixture->camera.get());
        SaveJob *second = create(u"b"_s, other);
        delete other;
        QCOMPARE(second->state(), SaveJob::Queued);
        poll({{"wr_seq", 5}});
        QCOMPARE(first->state(), SaveJob::Done);
        QCOMPARE(second->state(), SaveJob::Error);
        QCOMPARE(second->error(), u"take deleted or closed"_s);
    }

    void lostCameraFailsASaveThatItHeldBack()
    {
        SaveJob *job = answered();
        poll({{"progress", 1}});
        QCOMPARE(job->state(), SaveJob::QueuedFW);
        m_fixture->camera.reset();
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"camera disconnected"_s);
    }

    void lostCameraLeavesTheSaveWhereItWas()
    {
        SaveJob *job = answered();
        SaveJob *waiting = create(u"b"_s);
        m_fixture->camera.reset();
        QCOMPARE(job->state(), SaveJob::Saving);
        QCOMPARE(job->error(), u"camera disconnected"_s);
        QCOMPARE(job->queue(), nullptr);
        QCOMPARE(waiting->state(), SaveJob::Error);
        QCOMPARE(waiting->error(), u"camera disconnected"_s);
        job->open();
    }
};

VESK_TEST_MAIN(TestSsdSaveEnd)
#include "tst_ssd_save_end.moc"
