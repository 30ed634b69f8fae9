#include "sim/fault.h"
#include "tests/support/vesk_test_main.h"
#include "tests/take/autosave_case.h"

using namespace Qt::StringLiterals;
using q4sim::FaultKind;
using q4sim::Route;

/** A camera that is left alone and whose answers fail: what was recorded is never lost by it. */
class TestAutosaveFaults : public QObject, private AutosaveCase
{
    Q_OBJECT

private:
    /** A camera with two partitions that is recording; what it has recorded is to be saved and deleted. */
    void record(q4sim::Config with = config())
    {
        setSettings(true, true, u"crash"_s);
        with.partitions = 2;
        start(with);
        m_camera->record();
        QTRY_COMPARE(sent("/rec"), 1);
    }

    QJsonArray savedTakes() const { return sim().value(u"acq/saved_takes"_s).toArray(); }

    static q4sim::Config slowConfig()
    {
        q4sim::Config slow = config();
        slow.driveBytesPerSecond = 1000000;
        slow.resolutions = QStringList{u"320x240"_s};
        return slow;
    }

    /** Ends a recording of 7.7 MB, which is some seconds of writing. */
    void triggerLongRecording()
    {
        QTRY_COMPARE(state(), 2);
        QTRY_VERIFY(sim().takeDescription(1)["fr_cnt"].toInt() >= 100);
        triggerRecording();
    }

private slots:
    void cleanup() { end(); }

    void saveThatFailsKeepsTheTake_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<SaveJob::State>("jobState");
        QTest::addColumn<QString>("error");
        QTest::newRow("server error") << FaultKind::Http500 << SaveJob::Error << u"out of order"_s;
        QTest::newRow("drive gone") << FaultKind::Vanish << SaveJob::Error
                                    << u"the drive is not ready, or writes"_s;
        QTest::newRow("no answer") << FaultKind::NoAnswer << SaveJob::Saving << QString();
    }

    void saveThatFailsKeepsTheTake()
    {
        QFETCH(const FaultKind, kind);
        QFETCH(const SaveJob::State, jobState);
        QFETCH(const QString, error);
        record();
        sim().setFault(Route::SsdSave, {.kind = kind, .count = 1});
        triggerRecording();
        QTRY_COMPARE(sent("/ssd-save"), 1);
        QTRY_COMPARE(job(0)->state(), jobState);
        QCOMPARE(job(0)->error(), error);
        poll();
        QCOMPARE(job(0)->state(), jobState);
        QCOMPARE(sent("/del"), 0);
        QCOMPARE(sent("/rec"), 1);
        QCOMPARE(savedTakes(), QJsonArray{1});
        if (kind != FaultKind::Http500)
            return;
        // The operator goes on, and the next recording is saved.
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(sent("/del"), 1);
        QCOMPARE(sim().requests("POST", u"/del"_s)[0].body, QByteArray("{\"take\":2}"));
        QCOMPARE(recordings().size(), 1);
    }

    void answerThatCannotBeReadCountsAsSaved_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::newRow("broken JSON") << FaultKind::InvalidJson;
        QTest::newRow("cut JSON") << FaultKind::TruncatedJson;
        QTest::newRow("no keys") << FaultKind::MissingKeys;
        QTest::newRow("other types") << FaultKind::WrongTypes;
        QTest::newRow("empty reply") << FaultKind::EmptyReply;
    }

    /**
     * Without a number the save counts as ended at once. The camera, which is still writing, holds the take
     * locked and refuses to delete it, so that nothing is lost, and records into the next partition.
     */
    void answerThatCannotBeReadCountsAsSaved()
    {
        QFETCH(const FaultKind, kind);
        record(slowConfig());
        sim().setFault(Route::SsdSave, {.kind = kind, .count = 1});
        triggerLongRecording();
        QTRY_COMPARE(sent("/rec"), 2);
        QCOMPARE(job(0)->state(), SaveJob::Done);
        QCOMPARE(job(0)->progress(), 100.0);
        QCOMPARE(job(0)->fileName(), u"crash"_s);
        QCOMPARE(sent("/del"), 1);
        QCOMPARE(sim().value(u"ssd/wr_state"_s).toInt(), 1);
        QCOMPARE(savedTakes(), QJsonArray{1});
        QTRY_COMPARE(state(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(sim().value(u"ssd/wr_state"_s).toInt(), 0, 60'000);
        QCOMPARE(recordings().size(), 1);
        QCOMPARE(recordings().at(0)["size"].toInteger(), job(0)->frCnt() * (32 + 320 * 240));
        QCOMPARE(savedTakes(), QJsonArray{1});
        QCOMPARE(sent("/ssd-save"), 1);
    }

    void deletionThatFailsRecordsAllTheSame_data()
    {
        QTest::addColumn<FaultKind>("kind");
        QTest::addColumn<bool>("kept");
        QTest::newRow("server error") << FaultKind::Http500 << true;
        QTest::newRow("broken JSON") << FaultKind::InvalidJson << false;
        QTest::newRow("empty reply") << FaultKind::EmptyReply << false;
        QTest::newRow("cut reply") << FaultKind::CloseMidBody << false;
    }

    void deletionThatFailsRecordsAllTheSame()
    {
        QFETCH(const FaultKind, kind);
        QFETCH(const bool, kept);
        record();
        spoil(u"/del"_s, 1, kind);
        triggerRecording();
        QTRY_COMPARE(sent("/rec"), 2);
        QCOMPARE(sent("/del"), 1);
        QTRY_COMPARE(state(), 2);
        QCOMPARE(savedTakes(), kept ? QJsonArray{1} : QJsonArray());
        QCOMPARE(recordings().size(), 1);
        // The one behind it is saved, too, if it lies in a partition that has seen none.
        triggerRecording();
        QTRY_COMPARE(savedTakes().size() + sent("/ssd-save"), kept ? 3 : 2);
        QCOMPARE(job(0)->state(), SaveJob::Done);
    }

    void requestWithoutAnAnswerEndsTheRow_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("number");
        QTest::newRow("deletion") << u"/del"_s << 1;
        QTest::newRow("recording") << u"/rec"_s << 2;
    }

    /** What was saved is on the drive, and the operator can go on by hand. */
    void requestWithoutAnAnswerEndsTheRow()
    {
        QFETCH(const QString, path);
        QFETCH(const int, number);
        record();
        spoil(path, number, FaultKind::NoAnswer);
        triggerRecording();
        QTRY_COMPARE(sim().requests("POST", path).size(), number);
        poll();
        QCOMPARE(job(0)->state(), SaveJob::Done);
        QCOMPARE(sent("/rec"), path == u"/del" ? 1 : 2);
        QCOMPARE(state(), 1);
        QCOMPARE(savedTakes(), path == u"/del" ? QJsonArray{1} : QJsonArray());
        QCOMPARE(recordings().size(), 1);
        m_camera->record();
        QTRY_COMPARE(state(), 2);
    }

    void refusedRecordingLeavesTheCameraReady()
    {
        record();
        spoil(u"/rec"_s, 2, FaultKind::Http500);
        triggerRecording();
        QTRY_COMPARE(sent("/rec"), 2);
        poll();
        QCOMPARE(sent("/rec"), 2);
        QCOMPARE(state(), 1);
        QCOMPARE(savedTakes(), QJsonArray());
        QCOMPARE(recordings().size(), 1);
        m_camera->record();
        QTRY_COMPARE(state(), 2);
    }

private:
    /** The n-th request for a path fails; the fault is set when it comes in. */
    void spoil(const QString &path, qsizetype number, FaultKind kind)
    {
        q4sim::Camera *camera = &sim();
        connect(
            camera, &q4sim::Camera::requestReceived, camera,
            [camera, path, number, kind](const q4sim::Request &request) {
                if (request.path == path && camera->requests("POST", path).size() == number)
                    camera->setFault(Route::Command, {.kind = kind, .count = 1});
            },
            Qt::DirectConnection);
    }
};

VESK_TEST_MAIN(TestAutosaveFaults)
#include "tst_autosave_faults.moc"
