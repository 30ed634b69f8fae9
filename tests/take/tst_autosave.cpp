#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"
#include "tests/take/autosave_case.h"

#include <QDateTime>
#include <QFile>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;

// Freed memory is kept back for a while under the address sanitizer, and would count as grown.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options()
{
    return "quarantine_size_mb=1";
}

/** In 40 recordings; the sanitizers keep records of what was allocated beside it. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
static constexpr qint64 GrowthKiB = 24 << 10;
#else
static constexpr qint64 GrowthKiB = 4 << 10;
#endif

/** A camera that is left alone: each finished take goes onto its drive, and the next recording begins. */
class TestAutosave : public QObject, private AutosaveCase
{
    Q_OBJECT

private:
    static qint64 residentKiB()
    {
        QFile status(u"/proc/self/status"_s);
        if (!status.open(QIODevice::ReadOnly))
            return 0;
        static const QRegularExpression line(u"VmRSS:\\s*(\\d+) kB"_s);
        return line.match(QString::fromLatin1(status.readAll())).captured(1).toLongLong();
    }

private slots:
    void cleanup() { end(); }

    void finishedTakeIsSavedDeletedAndFollowedByTheNext()
    {
        setSettings(true, true, u"crash"_s);
        start(config());
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(sent("/rec"), 2);
        QCOMPARE(jobs()->size(), 1);
        QCOMPARE(job(0)->state(), SaveJob::Done);
        QCOMPARE(job(0)->fileName(), u"crash"_s);
        QCOMPARE(job(0)->dest(), SaveJob::SsdDest);
        QCOMPARE(sent("/del"), 1);
        QCOMPARE(sim().requests("POST", u"/del"_s)[0].body, QByteArray("{\"take\":1}"));
        QTRY_COMPARE(state(), 2);
        QCOMPARE(sim().value(u"acq/saved_takes"_s).toArray(), QJsonArray());
        QCOMPARE(recordings().size(), 1);
        QCOMPARE(recordings().at(0)["name"].toString(), u"crash.vesk"_s);
        QCOMPARE(recordings().at(0)["size"].toInteger(), job(0)->frCnt() * RecordSize);
        QCOMPARE(job(0)->startFr() + job(0)->frCnt(), 10); // to the last of the frames behind the trigger
    }

    void fiftyRecordingsInARowAreKept()
    {
        constexpr int count = 50;
        setSettings(true, true);
        q4sim::Config many = config();
        many.partitions = count + 1;
        many.partitionOrder = q4sim::PartitionOrder::Next;
        many.driveBytesPerSecond = 1000000; // some saves end before their answer is read, some later
        start(many);
        m_camera->record();
        qint64 early = 0;
        qsizetype children = 0;
        for (int n = 1; n <= count; ++n) {
            triggerRecording();
            QTRY_COMPARE_WITH_TIMEOUT(sent("/rec"), n + 1, 20000);
            if (n == 10) {
                early = residentKiB();
                children = m_camera->findChildren<QObject *>().size();
            }
        }
        QTRY_COMPARE(state(), 2);
        const qint64 grown = residentKiB() - early;
        qInfo("grown by %lld KiB in 40 recordings", grown);
        QVERIFY2(early > 0 && grown < GrowthKiB, qPrintable(u"grown by %1 KiB"_s.arg(grown)));
        QCOMPARE(m_camera->findChildren<QObject *>().size(), children);

        QCOMPARE(sent("/ssd-save"), count);
        QCOMPARE(sent("/del"), count);
        QCOMPARE(sim().value(u"acq/saved_takes"_s).toArray(), QJsonArray());
        QCOMPARE(sim().value(u"acq/locked_takes"_s).toArray(), QJsonArray());
        const QJsonArray kept = recordings();
        QCOMPARE(kept.size(), count);
        QCOMPARE(jobs()->size(), count);
        QSet<QString> names;
        for (int n = 0; n < count; ++n) {
            QCOMPARE(job(n)->state(), SaveJob::Done);
            QCOMPARE(job(n)->sourceTakeId(), n + 1);
            QCOMPARE(job(n)->startFr() + job(n)->frCnt(), 10);
            QCOMPARE(kept[n]["name"].toString(), job(n)->fileName() + u".vesk"_s);
            QCOMPARE(kept[n]["size"].toInteger(), job(n)->frCnt() * RecordSize);
            names.insert(kept[n]["name"].toString());
        }
        QCOMPARE(names.size(), count);
        const auto all = sim().requests();
        QByteArray order;
        for (const q4sim::Request &request : all) {
            if (request.path == u"/ssd-save" || request.path == u"/del" || request.path == u"/rec")
                order += request.path.mid(1).toLatin1() + ' ';
        }
        QCOMPARE(order, "rec " + QByteArray("ssd-save del rec ").repeated(count));
    }

    void laterRecordingInTheSamePartitionIsNotSaved()
    {
        setSettings(true, true, u"crash"_s);
        start(config());
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(sent("/rec"), 2);
        // The camera takes the first free partition, which is the same one.
        triggerRecording();
        auto *take = qobject_cast<Take *>(m_camera->takes()->get(0));
        QTRY_COMPARE(state(), 1);
        QTRY_VERIFY(take->savedOpened());
        poll();
        QCOMPARE(sent("/ssd-save"), 1);
        QCOMPARE(sent("/del"), 1);
        QCOMPARE(sent("/rec"), 2);
        QVERIFY(take->savedOpened());
        QCOMPARE(recordings().size(), 1);
    }

    void newPartitionsAreSavedAnew()
    {
        setSettings(true, true, u"crash"_s);
        start(config());
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(sent("/rec"), 2);
        QCOMPARE(sim().answer("POST", u"/abort"_s).status, 200);
        m_camera->partition(2);
        QTRY_COMPARE(m_camera->takes()->size(), 2);
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(sent("/ssd-save"), 2);
        QTRY_COMPARE(sent("/rec"), 4);
        QCOMPARE(recordings().size(), 2);
        QCOMPARE(recordings().at(1)["name"].toString(), u"crash (2).vesk"_s);
    }

    void takeStaysWithoutRestart()
    {
        setSettings(true, false, u"crash"_s);
        start(config());
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(jobs()->size(), 1);
        QTRY_COMPARE(job(0)->state(), SaveJob::Done);
        poll();
        QCOMPARE(sent("/del"), 0);
        QCOMPARE(sent("/rec"), 1);
        QCOMPARE(sim().value(u"acq/saved_takes"_s).toArray(), QJsonArray{1});
    }

    void nothingIsSavedUnlessArmed()
    {
        setSettings(false, true, u"crash"_s);
        start(config());
        m_camera->record();
        triggerRecording();
        auto *take = qobject_cast<Take *>(m_camera->takes()->get(0));
        QTRY_VERIFY(take->valuesInit());
        poll();
        QCOMPARE(jobs()->size(), 0);
        QCOMPARE(sent("/ssd-save"), 0);
    }

    void takeThatWasThereAtConnectionIsNotSaved()
    {
        setSettings(true, true, u"crash"_s);
        q4sim::Config with = config();
        with.takes = {{.first = -5, .last = 4}};
        start(with);
        auto *take = qobject_cast<Take *>(m_camera->takes()->get(0));
        QTRY_VERIFY(take->valuesInit());
        poll();
        QCOMPARE(sent("/ssd-save"), 0);
        // Nor is the next one in its partition: this object has seen a recording.
        QCOMPARE(sim().answer("POST", u"/del"_s, "{\"take\":1}").status, 200);
        QTRY_VERIFY(!take->savedOpened());
        m_camera->record();
        triggerRecording();
        QTRY_VERIFY(take->savedOpened());
        poll();
        QCOMPARE(sent("/ssd-save"), 0);
    }

    void emptyNameIsTheTime_data()
    {
        QTest::addColumn<QVariant>("fileName");
        QTest::newRow("not set") << QVariant();
        QTest::newRow("empty") << QVariant(QString());
    }

    void emptyNameIsTheTime()
    {
        QFETCH(QVariant, fileName);
        setSettings(true, false, fileName);
        start(config());
        const QDateTime before = QDateTime::currentDateTimeUtc();
        m_camera->record();
        triggerRecording();
        QTRY_COMPARE(jobs()->size(), 1);
        const QString name = job(0)->fileName();
        const QDateTime time = QDateTime::fromString(name, u"yyyy-MM-dd'T'HHmmss'Z'"_s);
        QVERIFY2(time.isValid(), qPrintable(name));
        QVERIFY(qAbs(QDateTime(time.date(), time.time(), QTimeZone::UTC).secsTo(before)) < 30);
    }

    void failedSaveKeepsTheTake_data()
    {
        QTest::addColumn<QJsonObject>("deed");
        QTest::addColumn<bool>("beforehand");
        QTest::addColumn<QString>("error");
        QTest::newRow("no drive") << QJsonObject{{"ssd", "remove"}} << true
                                  << u"the drive is not ready, or writes"_s;
        QTest::newRow("full") << QJsonObject{{"ssd", "full"}} << true << u"the drive is full"_s;
        QTest::newRow("fails meanwhile") << QJsonObject{{"ssd", "fail"}} << false << u"ssd.state = 7"_s;
        QTest::newRow("pulled meanwhile") << QJsonObject{{"ssd", "remove"}} << false << u"ssd.state = 0"_s;
    }

    void failedSaveKeepsTheTake()
    {
        QFETCH(QJsonObject, deed);
        QFETCH(bool, beforehand);
        QFETCH(QString, error);
        setSettings(true, true, u"crash"_s);
        q4sim::Config slow = config();
        slow.driveBytesPerSecond = 1000000;
        slow.resolutions = QStringList{u"320x240"_s};
        start(slow);
        if (beforehand)
            sim().operate(deed);
        m_camera->record();
        QTRY_COMPARE(state(), 2);
        // 7.7 MB, so that the save takes some seconds.
        QTRY_VERIFY(sim().takeDescription(1)["fr_cnt"].toInt() >= 100);
        triggerRecording();
        QTRY_COMPARE(jobs()->size(), 1);
        if (!beforehand) {
            QTRY_COMPARE(sim().value(u"ssd/wr_state"_s).toInt(), 1);
            sim().operate(deed);
        }
        QTRY_COMPARE(job(0)->state(), SaveJob::Error);
        QCOMPARE(job(0)->error(), error);
        poll();
        QCOMPARE(sent("/del"), 0);
        QCOMPARE(sent("/rec"), 1);
        QCOMPARE(sim().value(u"acq/saved_takes"_s).toArray(), QJsonArray{1});
    }

    void olderFirmwareIsLeftAloneToo()
    {
        setSettings(true, true, u"crash"_s);
        q4sim::Config old = config();
        old.firmware = q4sim::Firmware::Old;
        old.partitionOrder = q4sim::PartitionOrder::Next;
        start(old);
        m_camera->record();
        for (int n = 1; n <= 2; ++n) {
            triggerRecording();
            QTRY_COMPARE(sent("/rec"), n + 1);
        }
        QCOMPARE(sent("/ssd-save"), 2);
        QCOMPARE(sent("/del"), 2);
        QVERIFY(!sim().requests("POST", u"/ssd-save"_s)[0].body.contains("name"));
    }

    void switchCountsWhenTheTakeIsFinishedNotWhenItIsDescribed_data()
    {
        QTest::addColumn<bool>("armed");
        QTest::newRow("switched off meanwhile") << true;
        QTest::newRow("switched on meanwhile") << false;
    }

    void switchCountsWhenTheTakeIsFinishedNotWhenItIsDescribed()
    {
        QFETCH(const bool, armed);
        HttpRecorder server(u"127.0.2.27"_s);
        QVERIFY(server.isListening());
        server.setAnswer([](const HttpRecorder::Request &) {
            return HttpRecorder::Reply{R"({"takes":{"take3":{"last_fr":9,"fr_cnt":10}},"seq":0})", {}};
        });
        server.setHold([](const HttpRecorder::Request &) { return true; });
        Camera camera(server.address(), nullptr);
        camera.updateValues({{"features", QJsonObject{{"ssd-save", 2}}}, {"ssd", QJsonObject{{"state", 3}}}});
        auto *take = new Take(3, &camera);
        setSettings(armed, false, u"crash"_s);
        take->setSavedOpened(true, false, false);
        QTRY_COMPARE(server.heldCount(), 1);
        setSettings(!armed, false);
        server.release();
        QTRY_VERIFY(take->valuesInit());
        QCOMPARE(jobs()->size(), armed ? 1 : 0);
        if (armed)
            QTRY_COMPARE(job(0)->state(), SaveJob::Done);
        QCOMPARE(server.requests("POST", "/ssd-save").size(), armed ? 1 : 0);
    }

    void lostDescriptionIsMadeUpForOnce()
    {
        HttpRecorder server(u"127.0.2.27"_s);
        QVERIFY(server.isListening());
        Camera camera(server.address(), nullptr);
        camera.updateValues({{"features", QJsonObject{{"ssd-save", 2}}}, {"ssd", QJsonObject{{"state", 3}}}});
        auto *take = new Take(3, &camera);
        setSettings(true, false, u"crash"_s);
        // Three recordings come and go whose descriptions are lost; each arms the same one thing.
        for (int n = 0; n < 3; ++n) {
            QTest::ignoreMessage(QtCriticalMsg,
                                 qPrintable(take->objectName() + u": json parse error: illegal value"_s));
            take->setSavedOpened(true, false, false);
            QTRY_VERIFY(
                VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>().isEmpty());
            take->setSavedOpened(false, false, false);
        }
        QCOMPARE(jobs()->size(), 0);
        server.setAnswer([](const HttpRecorder::Request &) {
            return HttpRecorder::Reply{
                R"({"takes":{"take3":{"first_fr":-5,"last_fr":9,"fr_cnt":15}},"seq":0})",
                {},
                QHttpServerResponder::StatusCode::Ok};
        });
        take->setSavedOpened(true, false, false);
        QTRY_COMPARE(jobs()->size(), 1);
        QTRY_COMPARE(job(0)->state(), SaveJob::Done);
        QCOMPARE(server.requests("POST", "/ssd-save").size(), 1);
        QCOMPARE(server.requests("POST", "/ssd-save")[0].body,
                 QByteArray(R"({"take":3,"start":-5,"cnt":15,"name":"crash"})"));
    }
};

VESK_TEST_MAIN(TestAutosave)
#include "tst_autosave.moc"
