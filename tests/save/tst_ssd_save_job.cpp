#include "tests/save/ssd_save_case.h"
#include "tests/support/playback_source.h"
#include "tests/support/vesk_test_main.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

/** A save onto the drive: what it is made of, what it asks for and what it takes from the answer. */
class TestSsdSaveJob : public QObject, private SsdSaveCase
{
    Q_OBJECT

private slots:
    void init() { begin(); }
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
