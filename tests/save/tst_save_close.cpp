#include "save/save_job_queue.h"
#include "save/whole_file.h"
#include "tests/save/sim_save_fixture.h"
#include "tests/support/vesk_test_main.h"

#include <QFileInfo>

#include <atomic>
#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/** Files whose name ends so tell, when they are closed, that what was written before is lost. */
static std::atomic<const char *> s_lostEnding = nullptr;

/** The system's close(), for this program and the libraries in it. As over a network, only here it tells. */
extern "C" int close(int handle)
{
    bool lost = false;
    if (const char *ending = s_lostEnding) {
        char path[4096];
        const ssize_t size = readlink(("/proc/self/fd/" + std::to_string(handle)).c_str(), path, sizeof path);
        lost = size > 0 && std::string_view(path, std::size_t(size)).ends_with(ending);
    }
    const long result = syscall(SYS_close, handle);
    if (!lost)
        return int(result);
    errno = EIO;
    return -1;
}

/** Disks that take all the bytes and then tell, at the end, that they are not there. */
class TestSaveClose : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimSaveFixture> m_fixture;

private slots:
    void init()
    {
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = 0, .last = 99, .frameRate = 500.0, .res = u"160x96"_s});
        QVERIFY(m_fixture->open());
    }

    void cleanup()
    {
        s_lostEnding = nullptr;
        m_fixture.reset();
    }

    void closeThatFailsEndsANativeSaveAndKeepsTheFile()
    {
        s_lostEnding = ".vesk";
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 20);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QVERIFY(job->progress() < 100.0);
        QCOMPARE(m_fixture->files(), QStringList(u"shot.vesk"_s));
        s_lostEnding = nullptr;
        SaveJob *next = m_fixture->save(Util::FormatVesk, 0, 20, u"next"_s);
        QTRY_COMPARE(next->state(), SaveJob::Done);
    }

    void closeThatFailsEndsAnImageSaveAndLeavesTheImagesBefore()
    {
        s_lostEnding = "shot_05.tiff";
        SaveJob *job = m_fixture->save(Util::FormatTiff, 0, 20);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QCOMPARE(m_fixture->files(), QStringList({u"shot_00.tiff"_s, u"shot_01.tiff"_s, u"shot_02.tiff"_s,
                                                  u"shot_03.tiff"_s, u"shot_04.tiff"_s}));
    }

    void closeThatFailsEndsAFilmAndKeepsTheFile_data()
    {
        QTest::addColumn<Util::Format>("format");
        QTest::addColumn<Util::Codec>("codec");
        QTest::addColumn<QString>("file");
        QTest::newRow("AVI") << Util::FormatAvi << Util::CodecRaw_BGR24 << "shot.avi";
        QTest::newRow("AV1") << Util::FormatMp4 << Util::CodecAV1_YUV420P << "shot.mp4";
        QTest::newRow("H.264") << Util::FormatMp4 << Util::CodecH264 << "shot.mp4";
    }

    void closeThatFailsEndsAFilmAndKeepsTheFile()
    {
        QFETCH(const Util::Format, format);
        QFETCH(const Util::Codec, codec);
        QFETCH(const QString, file);
        const QByteArray ending = file.toLatin1();
        s_lostEnding = ending.constData();
        SaveJob *job =
            m_fixture->manager->createSaveJob(m_fixture->take, 0, 20, SaveManager::FileDest, format, codec,
                                              30.0, 15, u"shot"_s, m_fixture->folder);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QVERIFY(job->progress() < 100.0);
        QCOMPARE(m_fixture->files(), QStringList(file));
    }

    void bytesThatAreLeftForTheCloseAreMissed()
    {
        QFile full(u"/dev/full"_s);
        QVERIFY(full.open(QIODevice::WriteOnly)); // with a buffer
        QVERIFY(writeWhole(full, "few"));
        QVERIFY(!closeWhole(full));
        QFile file(m_fixture->path(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(writeWhole(file, "few"));
        QVERIFY(closeWhole(file));
        QCOMPARE(m_fixture->content(u"file"_s), QByteArray("few"));
    }

    void fileThatIsDeletedInTheMiddleIsNotComplete()
    {
        m_fixture->fault({.kind = q4sim::FaultKind::Drip, .ms = 10, .bytes = 160 * 96 + 32});
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 20);
        QTRY_VERIFY(job->progress() > 0.0);
        QVERIFY(QDir(m_fixture->folder).removeRecursively());
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QVERIFY(!QFileInfo::exists(m_fixture->folder));
    }

    void folderThatIsDeletedInTheMiddleEndsAnImageSave()
    {
        m_fixture->fault({.kind = q4sim::FaultKind::Drip, .ms = 10, .bytes = 160 * 96 + 32});
        SaveJob *job = m_fixture->save(Util::FormatTiff, 0, 20);
        QTRY_VERIFY(job->progress() > 0.0);
        QVERIFY(QDir(m_fixture->folder).removeRecursively());
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QVERIFY(!QFileInfo::exists(m_fixture->folder));
    }

    void folderThatIsRenamedInTheMiddleKeepsTheFile()
    {
        m_fixture->fault({.kind = q4sim::FaultKind::Drip, .ms = 10, .bytes = 160 * 96 + 32});
        QVERIFY(QDir().mkdir(m_fixture->path(u"in"_s)));
        SaveJob *job =
            m_fixture->manager->createSaveJob(m_fixture->take, 0, 20, SaveManager::FileDest, Util::FormatVesk,
                                              Util::CodecVesk, 0.0, 0, u"shot"_s, m_fixture->path(u"in"_s));
        QTRY_VERIFY(job->progress() > 0.0);
        QVERIFY(QDir().rename(m_fixture->path(u"in"_s), m_fixture->path(u"out"_s)));
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QVERIFY(m_fixture->content(u"out/shot.vesk"_s).endsWith(m_fixture->sent(0, 20)));
    }
};

VESK_TEST_MAIN(TestSaveClose)
#include "tst_save_close.moc"
