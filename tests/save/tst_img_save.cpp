#include "file/vesk_file.h"
#include "tests/save/foreign_tiff.h"
#include "tests/save/sim_save_fixture.h"
#include "tests/support/url_catcher.h"
#include "tests/support/vesk_test_main.h"

#include <QProcess>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;

/** Takes of a simulated camera as TIFF images: what is in them, and how they are called. */
class TestImgSave : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SimSaveFixture> m_fixture;
    int m_keptCfa = -1;

    bool openTake(int cfa, qint64 lastFr = 299)
    {
        m_keptCfa = -1;
        m_fixture.reset(); // its address is needed
        m_fixture = std::make_unique<SimSaveFixture>(
            q4sim::TakeOrder{.first = -20, .last = lastFr, .frameRate = 500.0, .res = u"160x96"_s}, cfa);
        return m_fixture->open();
    }

    /** The take that the row before has kept, with its adjustments, if it has the pattern; an empty folder.
     */
    bool openTakeOnce(int cfa)
    {
        if (m_keptCfa == cfa)
            return QDir(m_fixture->folder).removeRecursively() && QDir().mkpath(m_fixture->folder);
        const bool opened = openTake(cfa);
        m_keptCfa = cfa;
        return opened;
    }

    SaveJob *save(qlonglong startFr, qlonglong frCnt, const QString &name = u"shot"_s)
    {
        return m_fixture->save(Util::FormatTiff, startFr, frCnt, name);
    }

    QImage shown(qlonglong fr) { return m_fixture->shown(fr); }

    static QByteArray rgb(const QImage &image)
    {
        return SimSaveFixture::samples(image, &qRed, &qGreen, &qBlue);
    }

private slots:
    void cleanup()
    {
        if (m_keptCfa < 0)
            m_fixture.reset();
    }
    void cleanupTestCase() { m_fixture.reset(); }

    void imageIsThePictureThatTheViewShows_data()
    {
        QTest::addColumn<int>("cfa");
        QTest::addColumn<int>("rotate");
        QTest::addColumn<bool>("flipH");
        QTest::addColumn<bool>("flipV");
        QTest::addColumn<int>("overlay"); // 1 exposure assist, 2 to 4 focus peaking
        for (const int cfa : {0, 1, 2}) {
            for (const int rotate : {0, 90, 180, 270}) {
                for (int flip = 0; flip < 4; ++flip) {
                    QTest::addRow("cfa %d rotated %d flip %d", cfa, rotate, flip)
                        << cfa << rotate << bool(flip & 1) << bool(flip & 2) << flip;
                }
            }
        }
        QTest::newRow("colour, strongest peaking") << 1 << 0 << false << false << 4;
        QTest::newRow("monochrome, strongest peaking") << 0 << 90 << false << true << 4;
    }

    void imageIsThePictureThatTheViewShows()
    {
        QFETCH(const int, cfa);
        QFETCH(const int, rotate);
        QFETCH(const bool, flipH);
        QFETCH(const bool, flipV);
        QFETCH(const int, overlay);
        QVERIFY(openTakeOnce(cfa));
        ImgAdjModel *adj = m_fixture->take->imgAdjModel();
        adj->gain()->setValue(2.0, false);
        adj->gamma()->setValue(1.6, false);
        adj->wbR()->setValue(1.4, false);
        // An answer from before would bring the old look back for a moment.
        const auto set = [this](const char *key) {
            return m_fixture->host.camera().takeDescription(1)["adjust"][QLatin1StringView(key)].toDouble();
        };
        QTRY_VERIFY(set("gain") == 2.0 && set("gamma") == 1.6 && set("wb_r") == 1.4);
        adj->setRotate(rotate);
        adj->setFlipH(flipH ? 1 : 0);
        adj->setFlipV(flipV ? 1 : 0);
        adj->setExpAssist(overlay == 1 ? ImgAdjModel::ExpAssistEnabled : ImgAdjModel::ExpAssistDisabled);
        adj->setFocusPeak(overlay > 1 ? ImgAdjModel::FocusPeak(overlay - 1) : ImgAdjModel::FocusPeakDisabled);
        const QImage pictures[] = {shown(-1), shown(0)};
        SaveJob *job = save(-1, 2, u"<fr>"_s);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(m_fixture->files(), QStringList({u"-1.tiff"_s, u"0.tiff"_s}));
        for (int i = 0; i < 2; ++i) {
            const ForeignTiff tiff = ForeignTiff::read(m_fixture->path(m_fixture->files()[i]));
            QCOMPARE(tiff.width, rotate % 180 == 0 ? 160 : 96);
            QCOMPARE(tiff.height, rotate % 180 == 0 ? 96 : 160);
            QVERIFY(tiff.rgb == rgb(pictures[i]));
        }
        QVERIFY(pictures[0] != pictures[1]);
    }

    void everyFrameOfALongRunIsInItsOwnImage()
    {
        QVERIFY(openTake(1));
        SaveJob *job = save(-20, 160, u"<fr:3>"_s);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 30000);
        QCOMPARE(m_fixture->files().size(), 160);
        for (const qlonglong fr : {-20, 0, 1, 137, 139}) {
            const QString name = u"%1.tiff"_s.arg(fr, 3, 10, QChar(u'0'));
            QVERIFY(ForeignTiff::read(m_fixture->path(name)).rgb == rgb(shown(fr)));
        }
    }

    void imagesAreUncompressedOfEightBitsAndThreeChannels()
    {
        QVERIFY(openTake(0));
        SaveJob *job = save(0, 3);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QProcess info;
        info.start(u"tiffinfo"_s, {m_fixture->path(u"shot_2.tiff"_s)});
        QVERIFY(info.waitForFinished());
        const QString told = QString::fromUtf8(info.readAllStandardOutput());
        for (const char *line : {"Image Width: 160 Image Length: 96", "Bits/Sample: 8", "Samples/Pixel: 3",
                                 "Compression Scheme: None", "Photometric Interpretation: RGB color"})
            QVERIFY2(told.contains(QLatin1StringView(line)), qPrintable(told));
        QCOMPARE(told.count(u"TIFF Directory"_s), 1);
        for (const QString &file : m_fixture->files())
            QVERIFY(QFileInfo(m_fixture->path(file)).size() < 160 * 96 * 3 + 512);
    }

    void nameWithoutANumberGetsOneOfAsManyDigitsAsTheCount_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("last");
        QTest::newRow("nine") << 9 << "shot" << "shot_0.tiff" << "shot_8.tiff";
        QTest::newRow("ten") << 10 << "shot" << "shot_00.tiff" << "shot_09.tiff";
        QTest::newRow("hundred") << 100 << "shot" << "shot_000.tiff" << "shot_099.tiff";
        QTest::newRow("frame number") << 3 << "a<fr:6>" << "a000005.tiff" << "a000007.tiff";
        QTest::newRow("sequence number") << 3 << "b<seq:2>" << "b00.tiff" << "b02.tiff";
    }

    void nameWithoutANumberGetsOneOfAsManyDigitsAsTheCount()
    {
        QFETCH(const int, count);
        QFETCH(const QString, name);
        QVERIFY(openTake(0));
        SaveJob *job = save(5, count, name);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(m_fixture->files().size(), count);
        QTEST(m_fixture->files().first(), "first");
        QTEST(m_fixture->files().last(), "last");
    }

    void takenNameMovesThatImageAlone()
    {
        QVERIFY(openTake(0));
        for (const char *name : {"shot_1.tiff", "shot_2.tiff", "shot_2 (2).tiff"}) {
            QFile file(m_fixture->path(QString::fromLatin1(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        SaveJob *job = save(0, 4);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(m_fixture->files(),
                 QStringList({u"shot_0.tiff"_s, u"shot_1 (2).tiff"_s, u"shot_1.tiff"_s, u"shot_2 (2).tiff"_s,
                              u"shot_2 (3).tiff"_s, u"shot_2.tiff"_s, u"shot_3.tiff"_s}));
        QCOMPARE(m_fixture->content(u"shot_1.tiff"_s), QByteArray());
        QVERIFY(!m_fixture->content(u"shot_1 (2).tiff"_s).isEmpty());
    }

    void changesWhileItSavesHaveNoEffect()
    {
        QVERIFY(openTake(1));
        const QByteArray before = rgb(shown(99));
        m_fixture->fault({.kind = FaultKind::Delay, .ms = 200});
        SaveJob *job = save(99, 1);
        m_fixture->take->imgAdjModel()->gain()->setValue(4.0, false);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QVERIFY(ForeignTiff::read(m_fixture->path(u"shot_0.tiff"_s)).rgb == before);
    }

    void imageThatCannotBeWrittenEndsTheSaveAndLeavesTheOthers_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("folder is not there") << "gone/x" << QStringList();
        QTest::newRow("name taken meanwhile") << "x" << QStringList({u"x_0.tiff"_s, u"x_1.tiff"_s});
    }

    void imageThatCannotBeWrittenEndsTheSaveAndLeavesTheOthers()
    {
        QFETCH(const QString, name);
        QVERIFY(openTake(0));
        QVERIFY(QFile::link(m_fixture->path(u"nowhere"_s), m_fixture->path(u"x_2.tiff"_s)));
        SaveJob *job = save(0, 9, name);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QTEST(m_fixture->files(), "left");
    }

    void framesOfNoSizeEndTheSave()
    {
        QVERIFY(openTake(0));
        m_fixture->take->resValue()->updateValue(u"160"_s);
        SaveJob *job = save(0, 3);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"write error"_s);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void savesOfOneNameAtOnceTakeNoImageFromEachOther()
    {
        QVERIFY(openTake(0));
        VeskFile *file = m_fixture->openSaved(300);
        QVERIFY(file);
        QList<SaveJob *> jobs;
        for (int i = 0; i < 4; ++i)
            jobs.append(m_fixture->manager->createSaveJob(file, 0, 300, SaveManager::FileDest,
                                                          Util::FormatTiff, Util::CodecVesk, 0.0, 0,
                                                          u"shot"_s, m_fixture->folder));
        for (const SaveJob *job : jobs)
            QTRY_VERIFY_WITH_TIMEOUT(job->state() != SaveJob::Saving, 60000);
        file->close();
        for (const SaveJob *job : jobs)
            QCOMPARE(job->error(), QString());
        QCOMPARE(m_fixture->files().size(), 1 + 4 * 300);
        QTRY_COMPARE(VeskApp::instance()->veskObjModel()->size(), 0);
    }

    void imagesOfACancelledSaveStay()
    {
        QVERIFY(openTake(0));
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 20, .bytes = 160 * 96 + 32});
        SaveJob *job = save(0, 100);
        QTRY_VERIFY(job->progress() > 3.0);
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        QVERIFY(m_fixture->files().size() > 3);
        QCOMPARE(ForeignTiff::read(m_fixture->path(u"shot_000.tiff"_s)).width, 160);
    }

    void cancelDropsTheChunksThatWait()
    {
        QVERIFY(openTake(1, 9999));
        SaveJob *job = save(0, 10000);
        QTRY_VERIFY(job->progress() > 0.0);
        const qsizetype before = m_fixture->files().size();
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        const QStringList files = m_fixture->files();
        // What one look at the folder takes, and the chunk that was being written, of 2 MiB and a frame.
        QVERIFY2(files.size() - before < 1000, qPrintable(u"%1 and %2"_s.arg(before).arg(files.size())));
        for (const QString &file : {files.first(), files.last()})
            QCOMPARE(ForeignTiff::read(m_fixture->path(file)).rgb.size(), 160 * 96 * 3);
    }

    void openOfADoneSaveShowsItsFolder()
    {
        QVERIFY(openTake(0));
        UrlCatcher catcher;
        SaveJob *job = save(0, 2);
        job->open(); // not done yet
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(catcher.urls, QList<QUrl>());
        job->open();
        QCOMPARE(catcher.urls.size(), 1);
        QCOMPARE(catcher.urls.first().toLocalFile(), m_fixture->folder);
    }
};

VESK_TEST_MAIN(TestImgSave)
#include "tst_img_save.moc"
