#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "file/vesk_file_save_job.h"
#include "save/img_file_save_job.h"
#include "save/save_manager.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/vesk_test_main.h"

#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QtEndian>

#include <memory>

using namespace HandMade;

/** Native files saved as native files once more. */
class TestVeskFileSave : public QObject
{
    Q_OBJECT

private:
    static VeskApp *app() { return VeskApp::instance(); }
    static VeskFile *fileAt(int row) { return qobject_cast<VeskFile *>(app()->veskObjModel()->get(row)); }

    void openFile(const QByteArray &bytes)
    {
        app()->openVeskFile("file:" + m_folder->write(bytes));
        QVERIFY(fileAt(0));
    }
    /** Saves a range of the first file under a name; true when it is complete. */
    bool save(int startFr, int frCnt, const QString &name)
    {
        m_job = std::make_unique<VeskFileSaveJob>(
            SaveSource(fileAt(0)), startFr, frCnt,
            FileNameTemplate(m_folder->path({}), name, Util::FormatVesk, startFr), nullptr);
        m_job->start();
        return QTest::qWaitFor([this] { return m_job->state() > SaveJob::Saving; }) &&
               m_job->state() == SaveJob::Done;
    }
    QByteArray onDisk(const QString &name) const
    {
        QFile file(m_folder->path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<Folder> m_folder;
    std::unique_ptr<VeskFileSaveJob> m_job;

private slots:
    void init() { m_folder = std::make_unique<Folder>(); }

    void cleanup()
    {
        m_job.reset();
        while (VeskFile *file = fileAt(0))
            file->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void recordsOfASavedRangeAreThoseOfTheFile()
    {
        const QByteArray bytes = usualRun(-20, 20);
        openFile(bytes);
        QVERIFY(save(-3, 17, "b"));
        const QByteArray saved = onDisk("b.vesk");
        // Frame -3 is the eighteenth of the source.
        QCOMPARE(saved.sliced(4096), bytes.sliced(4096 + 17 * 16, 17 * 16));
        QCOMPARE(saved.first(8), QByteArray("VESK\2\0\0\0", 8));
        QCOMPARE(onDisk("a.vesk"), bytes);
    }

    void fileThatIsSavedWholeTwiceIsTheSame()
    {
        openFile(usualRun(-20, 20, ",\"adjust\":{\"gain\":2.5,\"wb_r\":1.25},\"camera\":{\"name\":\"A\"}"));
        QVERIFY(save(-20, 41, "b"));
        fileAt(0)->close();
        app()->openVeskFile("file:" + m_folder->path("b.vesk"));
        QVERIFY(fileAt(0));
        QVERIFY(save(-20, 41, "c"));
        QVERIFY(!onDisk("b.vesk").isEmpty());
        QCOMPARE(onDisk("c.vesk"), onDisk("b.vesk"));
    }

    void savedFileHasTheRangeAndTheAdjustmentsOfTheMoment()
    {
        openFile(usualRun(0, 299, ",\"adjust\":{\"gain\":2.5,\"gamma\":1.5}"));
        fileAt(0)->imgAdjModel()->gain()->setValue(3.5, false);
        QVERIFY(save(100, 100, "b"));
        m_job->open();
        QCOMPARE(app()->veskObjModel()->count(), 2);
        VeskFile *const saved = fileAt(1);
        QCOMPARE(app()->selectedVeskObject(), saved);
        QCOMPARE(saved->firstFrValue()->variant(), 100);
        QCOMPARE(saved->lastFrValue()->variant(), 199);
        QCOMPARE(saved->frCntValue()->variant(), 100);
        QCOMPARE(saved->imgAdjModel()->gain()->variant(), 3.5);
        QCOMPARE(saved->imgAdjModel()->gamma()->variant(), 1.5);
        QCOMPARE(saved->resValue()->variant(), "4x2");
        // A save has begun to play it.
        saved->pause();
        saved->setFr(142);
        QCOMPARE(saved->veskFrame()->seconds(), 142U);
    }

    void olderFileIsSavedInTheLayoutOfToday()
    {
        const QByteArray json =
            R"({"acq":{"res":"4x2"},"first_fr":7,"last_fr":8,"meta_size":8,"time":{"year_offset":3}})";
        openFile((header(1, 32, quint64(json.size()), 300) + json).leftJustified(300, '\0') + record(1, 10) +
                 record(2, 20));
        QVERIFY(save(7, 2, "b"));
        const QByteArray saved = onDisk("b.vesk");
        const auto jsonSize = qFromLittleEndian<quint64>(saved.constData() + 16);
        const QByteArray description = saved.sliced(36, qsizetype(jsonSize));
        QVERIFY(description.contains("\"meta\":{\"size\":8,\"year_offset\":3}"));
        QVERIFY(!description.contains("meta_size"));
        QVERIFY(!description.contains("\"time\""));
        QCOMPARE(saved.first(36), header(2, 36, jsonSize, 4096));
        QCOMPARE(saved.sliced(36 + qsizetype(jsonSize), 4096 - 36 - qsizetype(jsonSize)).count('\0'),
                 4096 - 36 - qsizetype(jsonSize));
        QCOMPARE(saved.sliced(4096), record(1, 10) + record(2, 20));
    }

    void longDescriptionMakesTheFileLargerThanItsEstimate()
    {
        const QByteArray name(5000, 'n');
        openFile(
            usualRun(0, 9, ",\"camera\":{\"name\":\"" + name + "\"},\"lens\":{\"name\":\"" + name + "\"}"));
        const qlonglong estimate =
            app()->saveManager()->estFileSize(fileAt(0), 10, Util::FormatVesk, Util::CodecVesk);
        QCOMPARE(estimate, 10 * 16 + 4096);
        QVERIFY(save(0, 10, "b"));
        const QByteArray saved = onDisk("b.vesk");
        QVERIFY(saved.size() > estimate);
        QCOMPARE((saved.size() - estimate) % 4096, 0);
        // What is more is the description, of which 4096 bytes with its header are allowed for.
        const auto jsonSize = qFromLittleEndian<quint64>(saved.constData() + 16);
        QCOMPARE(saved.size() - estimate, qsizetype((jsonSize + 36 + 4095) / 4096 * 4096) - 4096);
        QCOMPARE(saved.last(10 * 16), onDisk("a.vesk").last(10 * 16));
        m_job->open();
        QVERIFY(fileAt(1));
        QCOMPARE(fileAt(1)->lensNameValue()->variant().toByteArray(), name);
    }

    void partialFileIsKeptWhenTheSourceEndsEarly()
    {
        openFile(usualRun(0, 39).first(4096 + 25 * 16));
        QVERIFY(!save(0, 40, "b"));
        QCOMPARE(m_job->state(), SaveJob::Error);
        QCOMPARE(m_job->error(), "read error");
        QCOMPARE(onDisk("b.vesk").sliced(4096), usualRun(0, 19).sliced(4096));
        m_job->open();
        QCOMPARE(app()->veskObjModel()->count(), 1);
    }

    void fileCanBeSavedBesideItself()
    {
        const QByteArray bytes = usualRun(0, 9);
        openFile(bytes);
        QVERIFY(save(0, 10, "a"));
        QCOMPARE(onDisk("a.vesk"), bytes);
        QCOMPARE(onDisk("a (2).vesk").sliced(4096), bytes.sliced(4096));
        m_job->open();
        QVERIFY(fileAt(1));
        QCOMPARE(fileAt(1)->fileName(), m_folder->path("a (2).vesk"));
    }

    void cancelledImagesEndBeforeTheChunkDoes()
    {
        constexpr QSize size(4096, 2048);
        constexpr int frames = 10; // of one chunk
        QByteArray json = description(0, frames - 1);
        json.replace("4x2", "4096x2048");
        openFile(usual(json, QByteArray(frames * (8 + size.width() * size.height()), 'x')));
        ImgFileSaveJob job(SaveSource(fileAt(0)), 0, frames, Util::FormatTiff,
                           FileNameTemplate(m_folder->path({}), "shot", Util::FormatTiff, 0), nullptr);
        job.start();
        const auto images = [this] { return QDir(m_folder->path({})).entryList({"*.tiff"}, QDir::Files); };
        QElapsedTimer clock;
        clock.start();
        while (images().isEmpty() && clock.elapsed() < 10000)
            QCoreApplication::processEvents();
        job.cancel();
        QCOMPARE(job.state(), SaveJob::Cancelled);
        const QStringList saved = images();
        QVERIFY(!saved.isEmpty());
        QVERIFY2(saved.size() < frames, qPrintable(saved.join(' ')));
        for (const QString &image : saved)
            QCOMPARE(QImage(m_folder->path(image)).size(), size);
    }

    void savedFileWithANumberSignInItsNameOpens()
    {
        openFile(usualRun(0, 9));
        QVERIFY(save(0, 10, "take #3"));
        m_job->open();
        QVERIFY(fileAt(1));
        QCOMPARE(QFileInfo(fileAt(1)->fileName()).fileName(), "take #3.vesk");
    }
};

VESK_TEST_MAIN(TestVeskFileSave)
#include "tst_vesk_file_save.moc"
