#include "tests/save/foreign_tiff.h"
#include "tests/save/sim_save_fixture.h"
#include "tests/save/small_disk.h"
#include "tests/support/vesk_test_main.h"

#include <QtEndian>

using namespace Qt::StringLiterals;

/** Saves onto a disk that has no room for them. */
class TestSaveDiskFull : public QObject
{
    Q_OBJECT

private:
    static constexpr qsizetype RecordSize = 160 * 96 + 32;

    std::unique_ptr<SmallDisk> m_disk;
    std::unique_ptr<SimSaveFixture> m_fixture;

    bool begin(int kiB)
    {
        m_disk = std::make_unique<SmallDisk>(kiB);
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = 0, .last = 399, .frameRate = 500.0, .res = u"160x96"_s});
        m_fixture->folder = m_disk->folder();
        return m_disk->isMounted() && m_fixture->open();
    }

private slots:
    void cleanup()
    {
        m_fixture.reset();
        m_disk.reset();
    }

    void diskThatMayNotBeWrittenEndsTheSaveBeforeItBegins()
    {
        QVERIFY(begin(64));
        QVERIFY(m_disk->makeReadOnly());
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 10);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"can't open file for writing"_s);
        SaveJob *images = m_fixture->save(Util::FormatTiff, 0, 10);
        QTRY_COMPARE(images->state(), SaveJob::Error);
        QCOMPARE(images->error(), u"write error"_s);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void fullDiskEndsANativeSaveBeforeItBeginsAndLeavesNoFile()
    {
        QVERIFY(begin(64));
        QVERIFY(m_disk->fill(0));
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 10);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QCOMPARE(m_fixture->files(), QStringList(u"filler"_s));
    }

    void diskThatFillsUpWithTheFirstChunkEndsANativeSaveAndKeepsTheFile()
    {
        QVERIFY(begin(64));
        QVERIFY(m_disk->fill(2));
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 1);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QVERIFY(job->progress() < 100.0);
        QCOMPARE(m_fixture->content(u"shot.vesk"_s).size(), 8192);
    }

    void diskThatFillsUpInTheMiddleEndsANativeSaveAndKeepsWhatIsThere()
    {
        QVERIFY(begin(1024));
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 400);
        SaveJob *next = m_fixture->save(Util::FormatVesk, 0, 1);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        const QByteArray file = m_fixture->content(u"shot.vesk"_s);
        QVERIFY(file.size() > 900 * 1024 && file.size() <= 1024 * 1024);
        const auto dataOffset = qFromLittleEndian<quint64>(file.constData() + 24);
        QVERIFY(m_fixture->sent(0, 100).startsWith(QByteArrayView(file).sliced(qsizetype(dataOffset))));
        QTRY_COMPARE(next->state(), SaveJob::Error);
    }

    void lastFrameThatDoesNotFitIsNotComplete()
    {
        // Header and ten records fill 38 pages and a part of the 39th; the eleventh ends in the 43rd.
        QVERIFY(begin(42 * 4));
        SaveJob *job = m_fixture->save(Util::FormatVesk, 0, 11);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
    }

    void diskThatFillsUpEndsAnImageSaveAndLeavesWholeImages()
    {
        QVERIFY(begin(1024));
        SaveJob *job = m_fixture->save(Util::FormatTiff, 0, 100);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        const QStringList files = m_fixture->files();
        QVERIFY2(files.size() >= 15 && files.size() <= 22, qPrintable(files.join(u' '))); // 46080 bytes each
        QCOMPARE(files.last(), u"shot_%1.tiff"_s.arg(files.size() - 1, 3, 10, QChar(u'0')));
        for (const QString &file : {files.first(), files.last()})
            QCOMPARE(ForeignTiff::read(m_fixture->path(file)).rgb.size(), 160 * 96 * 3);
    }
};

int main(int argc, char *argv[])
{
    if (!leaveTheMachinesDisks()) {
        qCritical("The test needs the right to mount a disk of its own.");
        return 1;
    }
    return runVeskTest<TestSaveDiskFull>(argc, argv);
}
#include "tst_save_disk_full.moc"
