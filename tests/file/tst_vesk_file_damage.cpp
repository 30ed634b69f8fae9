#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "image/img_search.h"
#include "take/raw_frame.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/vesk_test_main.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <memory>

#include <sys/stat.h>

using namespace HandMade;

/** What the sanitizers take on top. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
static constexpr int Overhead = 10;
#else
static constexpr int Overhead = 1;
#endif

/** Native files that are damaged, or become so while they are open. */
class TestVeskFileDamage : public QObject
{
    Q_OBJECT

private:
    /** Peak of this process's memory in bytes since it was last asked for. */
    static qint64 memoryPeak()
    {
        QFile status("/proc/self/status");
        if (!status.open(QIODevice::ReadOnly))
            return -1;
        qint64 peak = -1;
        for (const QByteArray &line : status.readAll().split('\n'))
            if (line.startsWith("VmHWM:"))
                peak = line.sliced(6).trimmed().split(' ').first().toLongLong() * 1024;
        QFile reset("/proc/self/clear_refs");
        if (reset.open(QIODevice::WriteOnly))
            reset.write("5");
        return peak;
    }

    std::unique_ptr<VeskFile> written(const QByteArray &bytes)
    {
        return std::make_unique<VeskFile>(m_folder->write(bytes), VeskApp::instance());
    }

    std::unique_ptr<Folder> m_folder;

private slots:
    void init() { m_folder = std::make_unique<Folder>(); }

    void refusalIsOneCriticalLine_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("line"); // %1 is the name of the source
        const QByteArray good = usualRun(0, 3);
        const QString parseError = QStringLiteral("Critical: %1: json parse error: ");
        const qsizetype descriptionEnd = 36 + description(0, 3).size();
        QTest::newRow("empty") << QByteArray() << "Critical: unsupported vesk file";
        QTest::newRow("magic") << QByteArray(good).replace(0, 4, "VESQ") << "Critical: unsupported vesk file";
        QTest::newRow("version 3") << QByteArray(good).replace(4, 1, "\3")
                                   << "Critical: unsupported vesk file";
        for (qsizetype size = 1; size < 8; ++size)
            QTest::addRow("%lld bytes", qint64(size))
                << good.first(size) << "Critical: unsupported vesk file";
        for (qsizetype size = 8; size < 36; ++size)
            QTest::addRow("%lld bytes", qint64(size))
                << good.first(size) << parseError + "the file ends in its header";
        for (qsizetype size = 36; size < descriptionEnd; ++size)
            QTest::addRow("%lld bytes", qint64(size))
                << good.first(size) << parseError + "the file ends before its description";
        QTest::newRow("json null") << usual("null", {}) << parseError + "illegal value";
        QTest::newRow("json cut off") << usual("{\"a\":", {}) << parseError + "unterminated object";
        QTest::newRow("json array") << usual("[{}]", {}) << parseError + "the description is no object";
        QTest::newRow("json nested deeply")
            << usual(QByteArray(500000, '['), {}) << parseError + "too deeply nested document";
    }

    void refusalIsOneCriticalLine()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, line);
        const auto file = written(bytes);
        QSignalSpy init(file.get(), &VeskFile::valuesInitChanged);
        const LogLines log;
        QVERIFY(!file->open());
        QCOMPARE(LogLines::lines(), QStringList(line.contains("%1") ? line.arg(file->objectName()) : line));
        QCOMPARE(init.count(), 0);
        QVERIFY(!file->frCntValue()->variant().isValid());
        QVERIFY(file->isOpen()); // whoever opened it deletes it
    }

    void fileThatEndsBehindItsDescriptionOpens_data()
    {
        QTest::addColumn<qsizetype>("size");
        QTest::newRow("no gap") << 36 + description(0, 3).size();
        QTest::newRow("half a gap") << qsizetype(2000);
        QTest::newRow("no frame") << qsizetype(4096);
        for (qsizetype size = 4097; size <= 4096 + 4 * 16; ++size)
            QTest::addRow("%lld bytes", qint64(size)) << size;
    }

    /** What is there of the frames is shown, with 0 for the pixels that are missing. */
    void fileThatEndsBehindItsDescriptionOpens()
    {
        QFETCH(const qsizetype, size);
        const auto file = written(usualRun(0, 3).first(size));
        QVERIFY(file->open());
        const LogLines log;
        file->setSelected(true);
        file->pause();
        for (qint64 fr = 0; fr < 4; ++fr) {
            file->setFr(fr, true);
            const qsizetype held = std::clamp<qsizetype>(size - 4096 - 16 * fr, 0, 16);
            if (held >= 8) // the metadata is whole
                QCOMPARE(file->veskFrame()->seconds(), quint32(fr));
            QVERIFY(!file->frameInFlight());
        }
        const bool allWhole = size == 4096 + 4 * 16;
        QCOMPARE(file->imgFrame()->image().isNull(), size < 4096 + 8);
        if (allWhole)
            QCOMPARE(LogLines::lines(), QStringList());
    }

    void impossibleSizesShowNothing_data()
    {
        QTest::addColumn<QByteArray>("res");
        QTest::addColumn<QByteArray>("metaSize");
        QTest::addColumn<quint32>("imgSize");
        QTest::addColumn<qsizetype>("held"); // bytes of the record that are read
        const auto row = [](const char *res, const char *metaSize, quint32 imgSize, qsizetype held) {
            QTest::addRow("%s %s", res, metaSize)
                << QByteArray(res) << QByteArray(metaSize) << imgSize << held;
        };
        row("\"0x0\"", "8", 0, 8);
        row("\"65536x65536\"", "8", 0, 8);
        row("\"-1x4\"", "8", 0, 8);
        row("\"640X480\"", "8", 0, 8);
        row("\"640\"", "8", 0, 8);
        row("\"640x480x3\"", "8", 0, 8);
        row("\"x\"", "8", 0, 8);
        row("\"\"", "8", 0, 8);
        row("640", "8", 0, 8);
        row("null", "8", 0, 8);
        row("\"65535x65535\"", "8", 4294836225U, 0);
        row("\"4x2\"", "-1", 8, 7);          // 8 + 2^32 - 1 in 32 bits
        row("\"4x2\"", "-2147483648", 8, 0); // 2^31 + 8
        row("\"4x2\"", "2147483647", 8, 0);
        row("\"4x2\"", "1e300", 8, 8); // no int
    }

    void impossibleSizesShowNothing()
    {
        QFETCH(const QByteArray, res);
        QFETCH(const QByteArray, metaSize);
        const auto file =
            written(usual("{\"acq\":{\"res\":" + res +
                              "},\"first_fr\":0,\"last_fr\":9,\"meta\":{\"size\":" + metaSize + "}}",
                          QByteArray(4096, 'f')));
        QVERIFY(file->open());
        RawFrame frame;
        QCOMPARE(file->getFrame(&frame, 0), 0);
        QTEST(frame.imgSize(), "imgSize");
        QTEST(frame.data().size(), "held");
        const bool shown = metaSize == "1e300";
        const LogLines log;
        file->setSelected(true);
        QCOMPARE(file->imgFrame()->image().isNull(), !shown);
        QCOMPARE(LogLines::lines().isEmpty(), shown);
        QVERIFY(!file->frameInFlight());
    }

    void onlyTheFramesOfTheFileAreShownWhenTheLastIsBeforeTheFirst()
    {
        const auto file = written(
            usual(R"({"acq":{"res":"4x2"},"first_fr":5,"last_fr":1,"meta":{"size":8}})", record(3, 0)));
        QVERIFY(file->open());
        const LogLines log;
        file->setSelected(true);
        for (int i = 0; i < 4; ++i) {
            QMetaObject::invokeMethod(file.get(), "incrementFrame", Qt::DirectConnection);
            file->stepFrFwd();
            file->stepFrRev();
        }
        file->pause();
        for (qint64 fr = -10; fr < 20; ++fr)
            file->setFr(fr, true);
        QVERIFY(!file->frameInFlight());
        QCOMPARE(file->veskFrame()->seconds(), 3U);
    }

    void fileThatIsRemovedWhileItIsOpenPlaysOn()
    {
        const auto file = written(usualRun(0, 3));
        QVERIFY(file->open());
        QVERIFY(QFile::remove(file->fileName()));
        RawFrame frame;
        QCOMPARE(file->getFrame(&frame, 2), 0);
        QCOMPARE(frame.data(), record(2, 20));
    }

    void pictureStaysWhenTheFileShrinks()
    {
        const auto file = written(usualRun(0, 3));
        QVERIFY(file->open());
        file->setSelected(true);
        file->pause();
        file->setFr(3, true);
        const QImage shown = file->imgFrame()->image().copy();
        QVERIFY(!shown.isNull());
        QVERIFY(QFile::resize(file->fileName(), 4096 + 2 * 16 + 12));
        const LogLines log;
        file->setFr(3, true);
        QCOMPARE(file->imgFrame()->image(), shown);
        QCOMPARE(LogLines::lines().size(), 1); // a frame without its metadata
        file->setFr(2);
        QCOMPARE(file->veskFrame()->seconds(), 2U); // a frame that lacks pixels
        QVERIFY(QFile::resize(file->fileName(), 0));
        file->setFr(0);
        QCOMPARE(file->veskFrame()->seconds(), 2U);
        QVERIFY(!file->frameInFlight());
    }

    void fileThatGrowsBackIsShownAgain()
    {
        const QByteArray bytes = usualRun(0, 3);
        const auto file = written(bytes.first(4096));
        QVERIFY(file->open());
        file->setSelected(true);
        file->pause();
        QVERIFY(file->imgFrame()->image().isNull());
        QFile onDisk(file->fileName());
        QVERIFY(onDisk.open(QIODevice::Append));
        QCOMPARE(onDisk.write(bytes.sliced(4096)), 64);
        onDisk.close();
        file->setFr(1, true);
        QCOMPARE(file->veskFrame()->seconds(), 1U);
    }

    void searchEndsWhereTheFramesEnd()
    {
        const auto file = written(usualRun(0, 200).first(4096 + 16));
        QVERIFY(file->open());
        file->setSelected(true);
        const LogLines log;
        file->imgSearch()->start(true);
        QTRY_COMPARE(file->imgSearch()->state(), ImgSearch::Idle);
        QCOMPARE(file->fr(), 0);
    }

    void folderAndPipeDoNotOpen()
    {
        VeskFile folder(m_folder->path({}), VeskApp::instance());
        QVERIFY(!folder.open());
        QVERIFY(!folder.isOpen());
        const QString pipe = m_folder->path("pipe");
        QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
        VeskFile file(pipe, VeskApp::instance());
        QVERIFY(!file.open()); // and does not wait for somebody to write
        QVERIFY(!file.isOpen());
        VeskFile nothing(m_folder->path("none"), VeskApp::instance());
        QVERIFY(!nothing.open());
        QVERIFY(!nothing.isOpen());
    }

    void damagedFileCostsLittleTimeAndMemory_data()
    {
        QTest::addColumn<QByteArray>("start");
        QTest::addColumn<qint64>("size"); // of the sparse file
        const quint64 huge = 1ULL << 63;
        const qint64 large = 1LL << 40;
        const auto inner = [](const QByteArray &text) {
            QByteArray json = "{\"a\":[" + text.repeated((1024 * 1024 - 8) / text.size());
            json.back() = ']';
            return usual(json + "}", {});
        };
        QTest::newRow("sizes of 2^63") << header(2, huge, huge, huge) << qint64(0);
        QTest::newRow("a terabyte of description") << header(2, 36, quint64(large) - 36, 4096) << large;
        QTest::newRow("a terabyte of nothing") << QByteArray() << large;
        QTest::newRow("description of a mebibyte of nothing") << header(2, 4096, 1024 * 1024, 4096) << large;
        QTest::newRow("as many numbers as fit") << inner("0,") << qint64(0);
        QTest::newRow("as many arrays as fit") << inner("[0],") << qint64(0);
        QTest::newRow("as many objects as fit") << inner("{\"\":0},") << qint64(0);
        QTest::newRow("frames of 4 GB")
            << usual(R"({"acq":{"res":"65535x65535"},"first_fr":0,"last_fr":9,"meta":{"size":8}})", {})
            << large;
    }

    void damagedFileCostsLittleTimeAndMemory()
    {
        QFETCH(const QByteArray, start);
        QFETCH(const qint64, size);
        const auto file = written(start);
        if (size > 0)
            QVERIFY(QFile::resize(file->fileName(), size));
        const LogLines log;
        memoryPeak();
        const qint64 before = memoryPeak();
        QElapsedTimer timer;
        timer.start();
        file->open();
        file->setSelected(true); // shows the first frame, if there is one
        QVERIFY2(timer.elapsed() < 1000 * Overhead, qPrintable(QString::number(timer.elapsed())));
        const qint64 grown = memoryPeak() - before;
        QVERIFY(before > 0);
        QVERIFY2(grown < Overhead * 64LL * 1024 * 1024, qPrintable(QString::number(grown)));
    }
};

VESK_TEST_MAIN(TestVeskFileDamage)
#include "tst_vesk_file_damage.moc"
