#include "tests/save/film_fixture.h"
#include "tests/save/small_disk.h"
#include "tests/support/vesk_test_main.h"

#include <atomic>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

static std::atomic<bool> s_keepsNoRoom = false;

/** The system's fallocate(), or that of a file system that keeps no room ahead. */
extern "C" int fallocate(int handle, int mode, off_t offset, off_t size)
{
    if (!s_keepsNoRoom)
        return int(syscall(SYS_fallocate, handle, mode, offset, size));
    errno = EOPNOTSUPP;
    return -1;
}

/** Films on a disk that has no room for them. */
class TestVideoFileDisk : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SmallDisk> m_disk;
    std::unique_ptr<FilmFixture> m_fixture;

    bool begin(int kiB)
    {
        m_disk = std::make_unique<SmallDisk>(kiB);
        m_fixture = std::make_unique<FilmFixture>(1, 399);
        m_fixture->folder = m_disk->folder();
        return m_disk->isMounted() && m_fixture->open();
    }

private slots:
    void cleanup()
    {
        s_keepsNoRoom = false;
        m_fixture.reset();
        m_disk.reset();
    }

    void diskThatMayNotBeWrittenEndsTheSaveBeforeItBegins_data() { FilmFixture::addCodecs(); }

    void diskThatMayNotBeWrittenEndsTheSaveBeforeItBegins()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(begin(64));
        QVERIFY(m_disk->makeReadOnly());
        SaveJob *job = m_fixture->film(codec, 0, 10);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"can't open file for writing"_s);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void fullDiskEndsTheSaveBeforeItBeginsAndLeavesNoFile_data() { FilmFixture::addCodecs(); }

    void fullDiskEndsTheSaveBeforeItBeginsAndLeavesNoFile()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(begin(64));
        QVERIFY(m_disk->fill(0));
        SaveJob *job = m_fixture->film(codec, 0, 10);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"can't open file for writing"_s);
        QCOMPARE(m_fixture->files(), QStringList(u"filler"_s));
    }

    void diskThatFillsUpLeavesAFilmThatPlaysUpToThere_data() { FilmFixture::addCodecs(); }

    void diskThatFillsUpLeavesAFilmThatPlaysUpToThere()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(begin(512));
        // Coded frames are small: most of the disk is taken already.
        const bool raw = FilmFixture::format(codec) == Util::FormatAvi;
        QVERIFY(raw || m_disk->fill(32));
        SaveJob *job = m_fixture->film(codec, 0, 400);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Error, 30000);
        QCOMPARE(job->error(), u"write error"_s);
        QVERIFY(job->progress() < 100.0);
        const ForeignFilm film(m_fixture->path(u"shot"_s + FilmFixture::extension(codec)));
        QVERIFY2(film.frames() >= 3 && film.frames() < 400, qPrintable(QString::number(film.frames())));
        QCOMPARE(film.decoded(u"gray"_s).size(), film.frames() * 160 * 96);
        QCOMPARE(film.tag("title"), u"shot"_s);
        SaveJob *next = m_fixture->save(Util::FormatVesk, 0, 1);
        QTRY_COMPARE(next->state(), SaveJob::Done);
    }

    void diskThatKeepsNoRoomLeavesWhatTheContainerAllows_data()
    {
        QTest::addColumn<Util::Codec>("codec");
        QTest::addColumn<bool>("plays");
        QTest::newRow("BGR24") << Util::CodecRaw_BGR24 << true;
        QTest::newRow("Gray8") << Util::CodecRaw_Gray8 << true;
        // MP4 has the list of its frames at the end.
        QTest::newRow("AV1") << Util::CodecAV1_YUV420P << false;
        QTest::newRow("H.264") << Util::CodecH264 << false;
    }

    void diskThatKeepsNoRoomLeavesWhatTheContainerAllows()
    {
        QFETCH(const Util::Codec, codec);
        QFETCH(const bool, plays);
        QVERIFY(begin(512));
        QVERIFY(plays || m_disk->fill(32));
        s_keepsNoRoom = true;
        SaveJob *job = m_fixture->film(codec, 0, 400);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Error, 30000);
        QCOMPARE(job->error(), u"write error"_s);
        const ForeignFilm film(m_fixture->path(u"shot"_s + FilmFixture::extension(codec)));
        QCOMPARE(film.frames() >= 3, plays);
        QVERIFY(film.frames() < 400);
    }

    void cancelOnAFullDiskLeavesNoFile()
    {
        QVERIFY(begin(512));
        m_fixture->fault({.kind = q4sim::FaultKind::Drip, .ms = 10, .bytes = FilmFixture::RecordSize});
        SaveJob *job = m_fixture->film(Util::CodecRaw_BGR24, 0, 400);
        QTRY_VERIFY(job->progress() > 0.0);
        QVERIFY(m_disk->fill(0));
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        QCOMPARE(m_fixture->files(), QStringList(u"filler"_s));
    }
};

int main(int argc, char *argv[])
{
    if (!leaveTheMachinesDisks()) {
        qCritical("The test needs the right to mount a disk of its own.");
        return 1;
    }
    return runVeskTest<TestVideoFileDisk>(argc, argv);
}
#include "tst_video_file_disk.moc"
