#include "file/vesk_file.h"
#include "save/save_job_queue.h"
#include "take/raw_frame.h"
#include "tests/save/sim_save_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtEndian>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;

/** Takes of a simulated camera as native files: every byte, every name, and every way to fail. */
class TestNativeSave : public QObject
{
    Q_OBJECT

private:
    static constexpr qsizetype RecordSize = 320 * 240 + 32;

    std::unique_ptr<SimSaveFixture> m_fixture;

    SaveJob *save(qlonglong startFr, qlonglong frCnt, const QString &name = u"shot"_s)
    {
        return m_fixture->save(Util::FormatVesk, startFr, frCnt, name);
    }

    static void touch(const QString &path)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    struct Parsed {
        quint32 version;
        quint64 jsonOffset;
        quint64 dataOffset;
        quint32 dataFormat;
        QJsonObject json;
        QByteArray records;
    };

    static Parsed parsed(const QByteArray &file)
    {
        const char *at = file.constData();
        const auto jsonSize = qFromLittleEndian<quint64>(at + 16);
        const auto dataOffset = qFromLittleEndian<quint64>(at + 24);
        return {qFromLittleEndian<quint32>(at + 4),
                qFromLittleEndian<quint64>(at + 8),
                dataOffset,
                qFromLittleEndian<quint32>(at + 32),
                QJsonDocument::fromJson(file.mid(36, qsizetype(jsonSize))).object(),
                file.mid(qsizetype(dataOffset))};
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = -60, .last = 139, .frameRate = 500.0, .res = u"320x240"_s});
        QVERIFY(m_fixture->open());
    }

    void cleanup() { m_fixture.reset(); }

    void everyFrameOfTheTakeIsInTheFileAsTheCameraSentIt()
    {
        SaveJob *job = save(-60, 200);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        const QByteArray file = m_fixture->content(u"shot.vesk"_s);
        QCOMPARE(file.first(4), QByteArray("VESK"));
        const Parsed what = parsed(file);
        QCOMPARE(what.version, 2U);
        QCOMPARE(what.jsonOffset, 36U);
        QCOMPARE(what.dataFormat, 3U);
        QCOMPARE(what.dataOffset % 4096, 0U);
        QCOMPARE(what.records.size(), 200 * RecordSize);
        QVERIFY(what.records == m_fixture->sent(-60, 200));
        QCOMPARE(job->progress(), 100.0);
        QCOMPARE(job->error(), QString());
    }

    void openFileGivesEveryFrameAsTheCameraSentIt()
    {
        SaveJob *job = save(-60, 200);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        VeskFile file(m_fixture->path(u"shot.vesk"_s), VeskApp::instance());
        QVERIFY(file.open());
        const QByteArray sent = m_fixture->sent(-60, 200);
        QCOMPARE(sent.size(), 200 * RecordSize);
        for (qsizetype i = 0; i < 200; ++i) {
            RawFrame frame;
            QCOMPARE(file.getFrame(&frame, i - 60), 0);
            QVERIFY(frame.data() == QByteArrayView(sent).sliced(i * RecordSize, RecordSize));
        }
    }

    void savedRangeTellsItsOwnNumbers()
    {
        SaveJob *job = save(20, 100);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        const Parsed what = parsed(m_fixture->content(u"shot.vesk"_s));
        QCOMPARE(what.json["first_fr"], QJsonValue(20));
        QCOMPARE(what.json["last_fr"], QJsonValue(119));
        QCOMPARE(what.json["fr_cnt"], QJsonValue(100));
        QCOMPARE(what.json["acq"]["res"_L1], QJsonValue("320x240"));
        QCOMPARE(what.json["meta"]["size"_L1], QJsonValue(32));
        QVERIFY(what.records == m_fixture->sent(20, 100));
    }

    void fileKeepsTheLookThatTheTakeHadWhenTheSaveBegan()
    {
        m_fixture->take->imgAdjModel()->gain()->setValue(2.5, true);
        SaveJob *job = save(0, 3);
        m_fixture->take->imgAdjModel()->gain()->setValue(1.5, true);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(parsed(m_fixture->content(u"shot.vesk"_s)).json["adjust"]["gain"_L1], QJsonValue(2.5));
    }

    void openOfADoneSaveShowsTheFileAsASource()
    {
        VeskApp *app = VeskApp::instance();
        SaveJob *job = save(-5, 10, u"take #3 50%"_s);
        job->open(); // not done yet
        QCOMPARE(app->veskObjModel()->size(), 0);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        job->open();
        auto *file = qobject_cast<VeskFile *>(app->selectedVeskObject());
        QVERIFY(file);
        QCOMPARE(file->firstFrValue()->variant(), QVariant(-5));
        QCOMPARE(file->lastFrValue()->variant(), QVariant(4));
        file->close();
        QTRY_COMPARE(app->veskObjModel()->size(), 0);
    }

    void openFileIsSavedAgainWithTheSameRecords()
    {
        VeskApp *app = VeskApp::instance();
        SaveJob *first = save(-60, 35);
        QTRY_COMPARE(first->state(), SaveJob::Done);
        first->open();
        auto *file = qobject_cast<VeskFile *>(app->selectedVeskObject());
        QVERIFY(file);
        file->imgAdjModel()->gamma()->setValue(2.25, false);
        SaveJob *second =
            m_fixture->manager->createSaveJob(file, -50, 25, SaveManager::FileDest, Util::FormatVesk,
                                              Util::CodecVesk, 0.0, 0, u"again"_s, m_fixture->folder);
        QVERIFY(second);
        QCOMPARE(second->queue(), nullptr);
        QCOMPARE(second->sourceType(), SaveJob::VeskFileSourceType);
        QCOMPARE(second->sourceFileName(), m_fixture->path(u"shot.vesk"_s));
        QCOMPARE(second->state(), SaveJob::Saving);
        QTRY_COMPARE(second->state(), SaveJob::Done);
        const Parsed what = parsed(m_fixture->content(u"again.vesk"_s));
        QCOMPARE(what.json["first_fr"], QJsonValue(-50));
        QCOMPARE(what.json["adjust"]["gamma"_L1], QJsonValue(2.25));
        QVERIFY(what.records == m_fixture->sent(-50, 25));
        file->close();
        QTRY_COMPARE(app->veskObjModel()->size(), 0);
    }

    void takenNameGetsTheNextFreeNumber()
    {
        touch(m_fixture->path(u"shot.vesk"_s));
        touch(m_fixture->path(u"other.avi"_s));
        SaveJob *job = save(0, 2);
        QCOMPARE(job->fileName(), u"shot (2)"_s);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        SaveJob *third = save(0, 2);
        QSignalSpy renamed(third, &SaveJob::fileNameChanged);
        QTRY_COMPARE(third->state(), SaveJob::Done);
        QCOMPARE(third->fileName(), u"shot (3)"_s);
        SaveJob *other = save(0, 2, u"other"_s);
        QTRY_COMPARE(other->state(), SaveJob::Done);
        QCOMPARE(other->fileName(), u"other"_s);
        QCOMPARE(m_fixture->content(u"shot.vesk"_s), QByteArray());
    }

    void waitingSaveIsRenamedWhenItsTurnComes()
    {
        SaveJob *first = save(0, 50);
        SaveJob *second = save(0, 2);
        QSignalSpy renamed(second, &SaveJob::fileNameChanged);
        QCOMPARE(second->fileName(), u"shot"_s);
        QTRY_COMPARE(second->state(), SaveJob::Done);
        QCOMPARE(first->state(), SaveJob::Done);
        QCOMPARE(second->fileName(), u"shot (2)"_s);
        QCOMPARE(renamed.count(), 1);
    }

    void outputThatCannotBeOpenedEndsTheSaveBeforeItBegins_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("name");
        QTest::newRow("folder is not there") << "gone" << "shot";
        QTest::newRow("folder is a file") << "file" << "shot";
        // Not there when the name was checked, and there when it is opened.
        QTest::newRow("name taken meanwhile") << "." << "link";
        QTest::newRow("name in another folder") << "." << "gone/shot";
        QTest::newRow("name too long") << "." << QString(300, u'x');
    }

    void outputThatCannotBeOpenedEndsTheSaveBeforeItBegins()
    {
        QFETCH(QString, folder);
        QFETCH(QString, name);
        touch(m_fixture->path(u"file"_s));
        QVERIFY(QFile::link(m_fixture->path(u"nowhere"_s), m_fixture->path(u"link.vesk"_s)));
        SaveJob *job = m_fixture->manager->createSaveJob(m_fixture->take, 0, 2, SaveManager::FileDest,
                                                         Util::FormatVesk, Util::CodecVesk, 0.0, 0, name,
                                                         m_fixture->folder + u'/' + folder);
        QVERIFY(job);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"can't open file for writing"_s);
        QCOMPARE(m_fixture->camera->fileSaveJobQueue()->activeSaveJob(), nullptr);
        QCOMPARE(m_fixture->files(), QStringList(u"file"_s));
        QVERIFY(!QFile::exists(m_fixture->path(u"nowhere"_s)));
    }

    void answerThatDripsIsSavedWhole()
    {
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 1, .bytes = 50001});
        SaveJob *job = save(0, 20);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QVERIFY(parsed(m_fixture->content(u"shot.vesk"_s)).records == m_fixture->sent(0, 20));
    }

    void connectionThatBreaksInTheMiddleEndsTheSaveAndKeepsWhatCame()
    {
        m_fixture->fault({.kind = FaultKind::CloseMidBody, .bytes = 30 * RecordSize + 1000});
        SaveJob *job = save(0, 100);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"HTTP 200"_s);
        const QByteArray records = parsed(m_fixture->content(u"shot.vesk"_s)).records;
        QVERIFY(records.size() <= 30 * RecordSize);
        QCOMPARE(records.size() % RecordSize, 0);
        QVERIFY(m_fixture->sent(0, 30).startsWith(records));
    }

    void takeThatTheCameraLosesEndsTheSave()
    {
        m_fixture->fault({.kind = FaultKind::Vanish, .take = 1});
        SaveJob *job = save(0, 100);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"no take 1"_s);
    }

    void takeThatIsDeletedInTheMiddleEndsTheSave()
    {
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 20, .bytes = RecordSize});
        SaveJob *job = save(0, 100);
        QTRY_VERIFY(job->progress() > 0.0);
        m_fixture->take->deleteTake();
        QTRY_COMPARE(job->state(), SaveJob::Error);
        // The poll or the broken connection, whichever is first.
        QVERIFY2(job->error() == u"take deleted or closed"_s || job->error() == u"HTTP 200"_s,
                 qPrintable(job->error()));
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
    }

    void cameraThatFallsSilentLeavesTheSaveToTheOperator()
    {
        m_fixture->fault({.kind = FaultKind::NoAnswer});
        SaveJob *job = save(0, 100);
        QTRY_VERIFY(!m_fixture->host.camera().requests("POST", u"/xfer"_s).isEmpty());
        QCOMPARE(job->state(), SaveJob::Saving);
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void cameraThatIsSwitchedOffInTheMiddleEndsTheSave()
    {
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 20, .bytes = RecordSize});
        SaveJob *job = save(0, 100);
        QTRY_VERIFY(job->progress() > 0.0);
        m_fixture->host.close();
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"HTTP 200"_s);
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
    }

    void cancelledSaveLeavesNoFileAndTheNextOneRuns()
    {
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 20, .bytes = RecordSize, .count = 1});
        SaveJob *job = save(0, 100);
        SaveJob *next = save(0, 10, u"next"_s);
        QTRY_VERIFY(job->progress() > 0.0);
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        QCOMPARE(job->error(), QString());
        QTRY_COMPARE(next->state(), SaveJob::Done);
        QCOMPARE(m_fixture->files(), QStringList(u"next.vesk"_s));
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
    }
};

VESK_TEST_MAIN(TestNativeSave)
#include "tst_native_save.moc"
