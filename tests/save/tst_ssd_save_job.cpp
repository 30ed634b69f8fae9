#include "app/qml_object_list_model.h"
#include "save/ssd_save_job.h"
#include "take/ssd_take.h"
#include "tests/save/save_source_fixture.h"
#include "tests/support/playback_source.h"
#include "tests/support/vesk_test_main.h"

#include <QNetworkReply>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTimer>

using namespace Qt::StringLiterals;
using Status = QHttpServerResponder::StatusCode;

static constexpr int OldFirmware = 1;
static constexpr int NewFirmware = 2;

/** A save onto the drive by both kinds of firmware; the camera's values are given by hand, poll by poll. */
class TestSsdSaveJob : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SaveSourceFixture> m_fixture;
    HttpRecorder::Reply m_reply;

    /** What the next poll shows. */
    void poll(const QJsonObject &ssd) { m_fixture->camera->updateValues({{"ssd", ssd}}); }

    void setFirmware(int ssdSave)
    {
        m_fixture->camera->updateValues(
            {{"features", QJsonObject{{"ssd-save", ssdSave}}},
             {"ssd", QJsonObject{{"state", 3}, {"wr_state", 0}, {"progress", 0}}}});
        if (ssdSave == NewFirmware)
            poll({{"wr_seq", 3}});
    }

    void answerWith(const QByteArray &body, Status status = Status::Ok) { m_reply = {body, {}, status}; }

    SaveJob *create(const QString &name = u"shot"_s, PlaybackVeskObject *source = nullptr)
    {
        return m_fixture->manager->createSaveJob(source ? source : m_fixture->take, -3, 8,
                                                 SaveManager::SsdDest, Util::FormatVesk, Util::CodecVesk, 0.0,
                                                 0, name, QString());
    }

    /** A job whose answer has been worked through. */
    SaveJob *answered(const QString &name = u"shot"_s)
    {
        SaveJob *job = create(name);
        return waitForAnswer() ? job : nullptr;
    }

    static bool waitForAnswer()
    {
        return QTest::qWaitFor([] {
            return VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>().isEmpty();
        });
    }

    QList<HttpRecorder::Request> sent() const { return m_fixture->server.requests("POST", "/ssd-save"); }
    SaveJobQueue *queue() const { return m_fixture->camera->ssdSaveJobQueue(); }

private slots:
    void init()
    {
        m_fixture = std::make_unique<SaveSourceFixture>();
        QVERIFY(m_fixture->server.isListening());
        answerWith(R"({"seq":5,"name":"shot.vesk"})");
        m_fixture->server.setAnswer([this](const HttpRecorder::Request &request) {
            return request.path == "/ssd-save" ? m_reply : HttpRecorder::Reply{};
        });
        setFirmware(NewFirmware);
        QVERIFY(waitForAnswer()); // of the take's description
    }

    void cleanup() { m_fixture.reset(); }

    void jobIsWhatItSaves()
    {
        SaveJob *job = create();
        QVERIFY(qobject_cast<SsdSaveJob *>(job));
        QCOMPARE(job->dest(), SaveJob::SsdDest);
        QCOMPARE(job->source(), m_fixture->take);
        QCOMPARE(job->sourceType(), SaveJob::TakeSourceType);
        QCOMPARE(job->sourceCameraName(), u"Cam"_s);
        QCOMPARE(job->sourceTakeId(), 3);
        QCOMPARE(job->sourceFileName(), QString());
        QCOMPARE(job->queue(), queue());
        QCOMPARE(job->startFr(), -3);
        QCOMPARE(job->frCnt(), 8);
        QCOMPARE(job->format(), Util::FormatVesk);
        QCOMPARE(job->codec(), Util::CodecVesk);
        QCOMPARE(job->frameRate(), 0.0);
        QCOMPARE(job->quality(), 0);
        QCOMPARE(job->fileExt(), u"vesk"_s);
        QCOMPARE(job->state(), SaveJob::Saving);
        QCOMPARE(queue()->activeSaveJob(), job);
        QCOMPARE(m_fixture->camera->fileSaveJobQueue()->activeSaveJob(), nullptr);
    }

    void onlyATakeIsSavedOntoTheDrive()
    {
        QCOMPARE(create(u"x"_s, new SsdTake(u"a.vesk"_s, m_fixture->camera.get())), nullptr);
        PlaybackSource other;
        QCOMPARE(create(u"x"_s, &other), nullptr);
        QCOMPARE(m_fixture->manager->saveJobs()->size(), 0);
        QVERIFY(create());
    }

    void anyFormatIsSavedAsTheCameraDoes_data()
    {
        QTest::addColumn<int>("format");
        for (const int format : {0, 1, 2, 3, 99})
            QTest::addRow("format %d", format) << format;
    }

    void anyFormatIsSavedAsTheCameraDoes()
    {
        QFETCH(int, format);
        SaveJob *job = m_fixture->manager->createSaveJob(m_fixture->take, 0, 1, SaveManager::SsdDest,
                                                         Util::Format(format), Util::CodecH264, 30.0, 15,
                                                         u"shot"_s, QString());
        QVERIFY(qobject_cast<SsdSaveJob *>(job));
        QCOMPARE(job->format(), Util::FormatVesk);
        QCOMPARE(job->codec(), Util::CodecVesk);
        QCOMPARE(job->quality(), 0);
    }

    void recordingOnTheDriveIsSavedIntoFiles()
    {
        auto *recording = new SsdTake(u"a b.vesk"_s, m_fixture->camera.get());
        recording->setTakeId(9);
        recording->setSavedOpened(true, true, false);
        SaveJob *job =
            m_fixture->manager->createSaveJob(recording, -5, 2, SaveManager::FileDest, Util::FormatVesk,
                                              Util::CodecVesk, 30.0, 15, u"shot"_s, m_fixture->folder.path());
        QVERIFY(job);
        QCOMPARE(job->sourceType(), SaveJob::SsdTakeSourceType);
        QCOMPARE(job->sourceFileName(), u"a b.vesk"_s);
        QCOMPARE(job->sourceTakeId(), 9);
        QCOMPARE(job->sourceCameraName(), u"Cam"_s);
        QCOMPARE(job->queue(), m_fixture->camera->fileSaveJobQueue());
        QTRY_COMPARE(m_fixture->server.requests("POST", "/xfer").size(), 1);
        QCOMPARE(m_fixture->server.requests("POST", "/xfer")[0].body,
                 QByteArray(R"({"type":3,"src":2,"take":9,"start":-5,"cnt":2})"));
        recording->setSavedOpened(false, false, false);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"take deleted or closed"_s);
    }

    void requestOfEachFirmware_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("body");
        const QByteArray range = "\"take\":3,\"start\":-3,\"cnt\":8";
        QTest::newRow("older") << OldFirmware << u"shot"_s << QByteArray("{" + range + "}");
        QTest::newRow("older, no name") << OldFirmware << QString() << QByteArray("{" + range + "}");
        QTest::newRow("no number") << 0 << u"shot"_s << QByteArray("{" + range + "}");
        const auto named = [&](const char *label, int ssdSave, const QString &name, const QString &expanded) {
            QTest::newRow(label) << ssdSave << name
                                 << QByteArray("{" + range + ",\"name\":\"" + expanded.toUtf8() + "\"}");
        };
        named("newer", 2, u"shot"_s, u"shot"_s);
        named("newest", 3, u"shot"_s, u"shot"_s);
        named("quote", 2, u"a \"b\""_s, u"a \"b\""_s);
        named("backslash and slash", 2, u"a\\b/c"_s, u"a\\b/c"_s);
        named("blanks", 2, u"  a  b "_s, u"  a  b "_s);
        named("placeholders", 2, u"%1%2%3%4"_s, u"%1%2%3%4"_s);
        named("Japanese", 2, u"衝突試験"_s, u"衝突試験"_s);
        named("255 bytes", 2, QString(255, u'x'), QString(255, u'x'));
        named("frame tag", 2, u"a<fr:3>"_s, u"a-03"_s);
        named("colon", 2, u"a:b"_s, u"ab"_s);
    }

    void requestOfEachFirmware()
    {
        QFETCH(int, ssdSave);
        QFETCH(QString, name);
        QFETCH(QByteArray, body);
        setFirmware(ssdSave);
        create(name);
        QTRY_COMPARE(sent().size(), 1);
        QCOMPARE(sent()[0].body, body);
        QCOMPARE(sent()[0].headers.value("User-Agent").toByteArray(), QByteArray("Vesk 1.0"));
        QCOMPARE(sent()[0].headers.value("Content-Type").toByteArray(), QByteArray("application/json"));
    }

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

    void answerWithoutANumberIsDoneAtOnce_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("broken JSON") << QByteArray("{\"seq\":5");
        QTest::newRow("no number") << QByteArray("{\"name\":\"x.vesk\"}");
        QTest::newRow("text") << QByteArray("{\"seq\":\"5\"}");
        QTest::newRow("empty") << QByteArray();
    }

    void answerWithoutANumberIsDoneAtOnce()
    {
        QFETCH(QByteArray, body);
        answerWith(body);
        SaveJob *job = answered();
        QCOMPARE(job->state(), SaveJob::Done);
    }

    void cameraTellsTheNameThatItTook_data()
    {
        QTest::addColumn<QByteArray>("told");
        QTest::addColumn<QString>("name");
        QTest::newRow("another") << QByteArray("\"shot (2).vesk\"") << u"shot (2)"_s;
        QTest::newRow("with a folder") << QByteArray("\"/ssd/run.q\"") << u"run"_s;
        QTest::newRow("up to the first dot") << QByteArray("\"a.b.vesk\"") << u"a"_s;
        QTest::newRow("Japanese") << QByteArray("\"衝突.vesk\"") << u"衝突"_s;
        QTest::newRow("no text") << QByteArray("7") << u"shot"_s;
    }

    void cameraTellsTheNameThatItTook()
    {
        QFETCH(QByteArray, told);
        QFETCH(QString, name);
        answerWith("{\"seq\":5,\"name\":" + told + "}");
        SaveJob *job = create();
        QSignalSpy ext(job, &SaveJob::fileExtChanged);
        QVERIFY(waitForAnswer());
        QCOMPARE(job->fileName(), name);
        QCOMPARE(job->fileExt(), u"vesk"_s);
        QCOMPARE(ext.count(), told == "7" ? 0 : 1);
    }

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

    void driveThatLeavesTheReadyStateFailsTheSave_data()
    {
        QTest::addColumn<int>("ssdSave");
        QTest::addColumn<int>("state");
        for (const int ssdSave : {OldFirmware, NewFirmware}) {
            for (const int state : {0, 1, 2, 4, 5, 6, 7, 8, 9})
                QTest::addRow("firmware %d: state %d", ssdSave, state) << ssdSave << state;
        }
    }

    void driveThatLeavesTheReadyStateFailsTheSave()
    {
        QFETCH(int, ssdSave);
        QFETCH(int, state);
        setFirmware(ssdSave);
        SaveJob *job = answered();
        poll({{"wr_state", 1}, {"progress", 20}});
        QVERIFY(job->state() == SaveJob::Saving || job->state() == SaveJob::QueuedFW);
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

    void savedRecordingIsOpenedByTheNameOfItsFile()
    {
        answerWith(R"({"seq":5,"name":"shot (2).vesk"})");
        SaveJob *job = answered();
        job->open();
        QCOMPARE(m_fixture->server.requests("POST", "/ssd-fopen").size(), 0);
        poll({{"wr_seq", 5}});
        QCOMPARE(job->state(), SaveJob::Done);
        // The partition may be gone by then.
        delete std::exchange(m_fixture->take, nullptr);
        job->open();
        QTRY_COMPARE(m_fixture->server.requests("POST", "/ssd-fopen").size(), 1);
        QCOMPARE(m_fixture->server.requests("POST", "/ssd-fopen")[0].body,
                 QByteArray("{\"name\":\"shot (2).vesk\"}"));
    }

    void failedSaveOpensNothing()
    {
        answerWith({}, Status::Conflict);
        SaveJob *job = answered();
        QCOMPARE(job->state(), SaveJob::Error);
        job->open();
        QVERIFY(!m_fixture->camera->findChild<SsdTake *>());
    }
};

VESK_TEST_MAIN(TestSsdSaveJob)
#include "tst_ssd_save_job.moc"
