#include "file/vesk_file.h"
#include "tests/save/film_fixture.h"
#include "tests/save/test_images.h"
#include "tests/support/url_catcher.h"
#include "tests/support/vesk_test_main.h"

#include <QFileInfo>

#include <atomic>
#include <dlfcn.h>

using namespace Qt::StringLiterals;
using q4sim::FaultKind;

struct AVCodec;
static std::atomic<const char *> s_missingEncoder = nullptr;

/** In the place of the library's own: a build of it without that encoder. */
extern "C" const AVCodec *avcodec_find_encoder_by_name(const char *name)
{
    if (s_missingEncoder && qstrcmp(s_missingEncoder, name) == 0)
        return nullptr;
    static const auto real =
        reinterpret_cast<const AVCodec *(*)(const char *)>(dlsym(RTLD_NEXT, "avcodec_find_encoder_by_name"));
    return real(name);
}

/** Takes of a simulated camera as films: what is in them, and what is left when something comes between. */
class TestVideoFileSave : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FilmFixture> m_fixture;

    bool openTake(int cfa, qint64 lastFr = 99, const QString &res = u"160x96"_s)
    {
        m_fixture.reset(); // its address is needed
        m_fixture = std::make_unique<FilmFixture>(cfa, lastFr, res);
        return m_fixture->open();
    }

    /** A camera that sends slowly, so that a save is under way for a while. */
    void slowDown()
    {
        m_fixture->fault({.kind = FaultKind::Drip, .ms = 10, .bytes = FilmFixture::RecordSize});
    }

    QString path(Util::Codec codec, const QString &name = u"shot"_s) const
    {
        return m_fixture->path(name + FilmFixture::extension(codec));
    }

private slots:
    void cleanup()
    {
        s_missingEncoder = nullptr;
        m_fixture.reset();
    }

    void rawFilmIsWhatTheViewShows_data()
    {
        QTest::addColumn<int>("cfa");
        QTest::addColumn<int>("rotate");
        QTest::addColumn<int>("flip");    // 1 to the sides, 2 upside down
        QTest::addColumn<int>("overlay"); // 1 exposure assist, 2 to 4 focus peaking
        QTest::newRow("monochrome") << 0 << 0 << 0 << 0;
        QTest::newRow("colour") << 1 << 0 << 0 << 0;
        QTest::newRow("other colour") << 2 << 0 << 0 << 0;
        QTest::newRow("colour, flipped") << 1 << 0 << 3 << 0;
        QTest::newRow("monochrome, flipped") << 0 << 0 << 1 << 0;
        QTest::newRow("colour, turned") << 1 << 90 << 0 << 0;
        QTest::newRow("colour, turned back") << 1 << 270 << 2 << 0;
        QTest::newRow("monochrome, turned") << 0 << 90 << 0 << 0;
        QTest::newRow("colour, exposure assist") << 1 << 0 << 0 << 1;
        QTest::newRow("monochrome, peaking, turned") << 0 << 270 << 1 << 4;
        QTest::newRow("colour, peaking") << 1 << 0 << 0 << 3;
    }

    void rawFilmIsWhatTheViewShows()
    {
        QFETCH(const int, cfa);
        QFETCH(const int, rotate);
        QFETCH(const int, flip);
        QFETCH(const int, overlay);
        QVERIFY(openTake(cfa));
        ImgAdjModel *adj = m_fixture->take->imgAdjModel();
        adj->gain()->setValue(2.0, false);
        const auto gain = [this] {
            return m_fixture->host.camera().takeDescription(1)["adjust"]["gain"_L1].toDouble();
        };
        QTRY_COMPARE(gain(), 2.0); // an answer from before would bring the old look back for a moment
        adj->setRotate(rotate);
        adj->setFlipH(flip & 1 ? 1 : 0);
        adj->setFlipV(flip & 2 ? 1 : 0);
        adj->setExpAssist(overlay == 1 ? ImgAdjModel::ExpAssistEnabled : ImgAdjModel::ExpAssistDisabled);
        adj->setFocusPeak(overlay > 1 ? ImgAdjModel::FocusPeak(overlay - 1) : ImgAdjModel::FocusPeakDisabled);
        QByteArray shown;
        for (const int fr : {-1, 0, 1})
            shown += FilmFixture::bgr(m_fixture->shown(fr));
        SaveJob *color = m_fixture->film(Util::CodecRaw_BGR24, -1, 3);
        SaveJob *gray = m_fixture->film(Util::CodecRaw_Gray8, -1, 3, u"gray"_s);
        QTRY_COMPARE(color->state(), SaveJob::Done);
        QTRY_COMPARE(gray->state(), SaveJob::Done);
        const ForeignFilm film(path(Util::CodecRaw_BGR24));
        QCOMPARE(film.size(), rotate == 0 ? u"160x96"_s : u"96x160"_s);
        QCOMPARE(film.frames(), 3);
        QCOMPARE(film.stream("r_frame_rate"), u"30000/1001"_s);
        QVERIFY(film.decoded(u"bgr24"_s) == shown);
        const QByteArray luma = ForeignFilm(path(Util::CodecRaw_Gray8, u"gray"_s)).decoded(u"gray"_s);
        QCOMPARE(luma.size(), shown.size() / 3);
        for (qsizetype i = 0; i < luma.size(); ++i) {
            const double of = 0.114 * uchar(shown[3 * i]) + 0.587 * uchar(shown[3 * i + 1]) +
                              0.299 * uchar(shown[3 * i + 2]);
            QVERIFY(std::abs(uchar(luma[i]) - of) <= 1.0);
            QVERIFY(cfa != 0 || overlay != 0 || luma[i] == shown[3 * i]);
        }
    }

    void codedFilmLooksLikeTheView_data()
    {
        QTest::addColumn<Util::Codec>("codec");
        QTest::addColumn<int>("cfa");
        QTest::addColumn<int>("rotate");
        for (const Util::Codec codec : {Util::CodecAV1_YUV420P, Util::CodecAV1_YUV420P10, Util::CodecH264}) {
            QTest::addRow("codec %d, colour", codec) << codec << 1 << 0;
            QTest::addRow("codec %d, monochrome, turned", codec) << codec << 0 << 90;
        }
    }

    void codedFilmLooksLikeTheView()
    {
        QFETCH(const Util::Codec, codec);
        QFETCH(const int, cfa);
        QFETCH(const int, rotate);
        QVERIFY(openTake(cfa));
        m_fixture->take->imgAdjModel()->setRotate(rotate);
        const QByteArray first = FilmFixture::bgr(m_fixture->shown(0));
        const QByteArray last = FilmFixture::bgr(m_fixture->shown(59));
        SaveJob *job = m_fixture->film(codec, 0, 60);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 30000);
        const ForeignFilm film(path(codec));
        QCOMPARE(film.size(), rotate == 0 ? u"160x96"_s : u"96x160"_s);
        QCOMPARE(film.frames(), 60);
        const QByteArray decoded = film.decoded(u"bgr24"_s);
        QCOMPARE(decoded.size(), 60 * first.size());
        const double atFirst = TestImages::psnr(decoded.first(first.size()), first);
        const double atLast = TestImages::psnr(decoded.last(last.size()), last);
        QVERIFY2(atFirst > 27.0 && atLast > 27.0, qPrintable(u"%1, %2"_s.arg(atFirst).arg(atLast)));
        // Each is the frame that it should be, and not its neighbour.
        const double crossed = TestImages::psnr(decoded.first(first.size()), last);
        QVERIFY2(crossed < atFirst - 3.0, qPrintable(QString::number(crossed)));
    }

    void everyFrameOfALongRunIsInItsPlace()
    {
        QVERIFY(openTake(1, 299));
        SaveJob *job = m_fixture->film(Util::CodecRaw_BGR24, -20, 300);
        QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 30000);
        const QByteArray film = ForeignFilm(path(Util::CodecRaw_BGR24)).decoded(u"bgr24"_s);
        const qsizetype size = 160 * 96 * 3;
        QCOMPARE(film.size(), 300 * size);
        for (const int fr : {-20, -19, 0, 117, 278, 279})
            QVERIFY(film.sliced((fr + 20) * size, size) == FilmFixture::bgr(m_fixture->shown(fr)));
    }

    void nativeFileIsASourceOfFilms_data() { FilmFixture::addCodecs(); }

    void nativeFileIsASourceOfFilms()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(1));
        SaveJob *native = m_fixture->save(Util::FormatVesk, 0, 40, u"source"_s);
        QTRY_COMPARE(native->state(), SaveJob::Done);
        native->open();
        auto *file = qobject_cast<VeskFile *>(VeskApp::instance()->selectedVeskObject());
        QVERIFY(file);
        SaveJob *job = m_fixture->film(codec, 3, 31, u"shot"_s, file);
        QTRY_VERIFY(job->state() != SaveJob::Saving);
        file->close();
        QTRY_COMPARE(VeskApp::instance()->veskObjModel()->size(), 0);
        QCOMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->progress(), 100.0);
        QCOMPARE(job->queue(), nullptr);
        QCOMPARE(ForeignFilm(path(codec)).frames(), 31);
    }

    void nameThatIsTakenGetsANumberAlsoInTheTitle_data() { FilmFixture::addCodecs(); }

    void nameThatIsTakenGetsANumberAlsoInTheTitle()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(0));
        QFile taken(path(codec));
        QVERIFY(taken.open(QIODevice::WriteOnly));
        SaveJob *job = m_fixture->film(codec, 0, 2);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->fileName(), u"shot (2)"_s);
        QCOMPARE(ForeignFilm(path(codec, u"shot (2)"_s)).tag("title"), u"shot (2)"_s);
        QCOMPARE(taken.size(), 0);
    }

    void jobTellsWhatItMakes()
    {
        QVERIFY(openTake(0));
        SaveJob *job = m_fixture->film(Util::CodecAV1_YUV420P10, 0, 2);
        QCOMPARE(job->format(), Util::FormatMp4);
        QCOMPARE(job->codec(), Util::CodecAV1_YUV420P10);
        QCOMPARE(job->frameRate(), 29.97);
        QCOMPARE(job->quality(), 15);
        QCOMPARE(job->fileExt(), u"mp4"_s);
        QTRY_COMPARE(job->state(), SaveJob::Done);
    }

    void changesWhileItSavesHaveNoEffect()
    {
        QVERIFY(openTake(1));
        const QByteArray before = FilmFixture::bgr(m_fixture->shown(99));
        m_fixture->fault({.kind = FaultKind::Delay, .ms = 200});
        SaveJob *job = m_fixture->film(Util::CodecRaw_BGR24, 99, 1);
        m_fixture->take->imgAdjModel()->gain()->setValue(4.0, false);
        m_fixture->take->imgAdjModel()->setRotate(90);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QVERIFY(ForeignFilm(path(Util::CodecRaw_BGR24)).decoded(u"bgr24"_s) == before);
    }

    void cancelInTheMiddleLeavesNoFile_data() { FilmFixture::addCodecs(); }

    void cancelInTheMiddleLeavesNoFile()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(1));
        slowDown();
        SaveJob *job = m_fixture->film(codec, 0, 100);
        QTRY_VERIFY(job->progress() > 3.0);
        QCOMPARE(m_fixture->files().size(), 1);
        job->cancel();
        QCOMPARE(job->state(), SaveJob::Cancelled);
        QCOMPARE(job->error(), QString());
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void cameraThatGoesLeavesAFilmUpToThere_data() { FilmFixture::addCodecs(); }

    void cameraThatGoesLeavesAFilmUpToThere()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(1));
        slowDown();
        SaveJob *job = m_fixture->film(codec, 0, 100);
        QTRY_VERIFY(job->progress() > 3.0);
        m_fixture->camera.reset();
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"camera disconnected"_s);
        const ForeignFilm film(path(codec));
        QVERIFY2(film.frames() >= 3 && film.frames() < 100, qPrintable(QString::number(film.frames())));
        QVERIFY(!film.decoded(u"bgr24"_s).isEmpty());
    }

    void cameraThatStopsSendingLeavesAFilmUpToThere_data() { FilmFixture::addCodecs(); }

    void cameraThatStopsSendingLeavesAFilmUpToThere()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(1));
        m_fixture->fault({.kind = FaultKind::CloseMidBody, .bytes = 10 * FilmFixture::RecordSize + 100});
        SaveJob *job = m_fixture->film(codec, 0, 100);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QVERIFY(!job->error().isEmpty());
        // What waits for the worker when the connection breaks is not written any more.
        const ForeignFilm film(path(codec));
        QVERIFY2(film.frames() <= 10, qPrintable(QString::number(film.frames())));
        QCOMPARE(m_fixture->files().isEmpty(), film.frames() == 0);
        QCOMPARE(film.decoded(u"gray"_s).size(), film.frames() * 160 * 96);
    }

    void cameraThatSendsNoWholeFrameLeavesNoFilm_data() { FilmFixture::addCodecs(); }

    void cameraThatSendsNoWholeFrameLeavesNoFilm()
    {
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(1));
        m_fixture->fault({.kind = FaultKind::CloseMidBody, .bytes = FilmFixture::RecordSize - 1});
        SaveJob *job = m_fixture->film(codec, 0, 100);
        QTRY_COMPARE(job->state(), SaveJob::Error);
        QVERIFY(!job->error().isEmpty());
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void encoderThatIsMissingFailsThatJobAlone_data()
    {
        QTest::addColumn<QByteArray>("missing");
        QTest::addColumn<Util::Codec>("codec");
        QTest::newRow("AV1") << QByteArray("libsvtav1") << Util::CodecAV1_YUV420P;
        QTest::newRow("AV1 of 10 bits") << QByteArray("libsvtav1") << Util::CodecAV1_YUV420P10;
        QTest::newRow("H.264") << QByteArray("libopenh264") << Util::CodecH264;
    }

    void encoderThatIsMissingFailsThatJobAlone()
    {
        QFETCH(const QByteArray, missing);
        QFETCH(const Util::Codec, codec);
        QVERIFY(openTake(1));
        s_missingEncoder = missing.constData();
        SaveJob *job = m_fixture->film(codec, 0, 10);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"can't open file for writing"_s);
        QCOMPARE(m_fixture->files(), QStringList());
        const Util::Codec other = codec == Util::CodecH264 ? Util::CodecAV1_YUV420P : Util::CodecH264;
        const QList<SaveJob *> others = {
            m_fixture->film(Util::CodecRaw_BGR24, 0, 3, u"a"_s), m_fixture->film(other, 0, 3, u"b"_s),
            m_fixture->save(Util::FormatTiff, 0, 3, u"c"_s), m_fixture->save(Util::FormatVesk, 0, 3, u"d"_s)};
        for (const SaveJob *one : others)
            QTRY_COMPARE(one->state(), SaveJob::Done);
    }

    void whatCannotBeMadeEndsTheJobAndLeavesNoFile_data()
    {
        QTest::addColumn<Util::Codec>("codec");
        QTest::addColumn<QString>("res");
        QTest::addColumn<QString>("name");
        QTest::newRow("folder is not there") << Util::CodecRaw_BGR24 << "160x96" << "gone/x";
        QTest::newRow("no size") << Util::CodecAV1_YUV420P << "160" << "x";
        QTest::newRow("odd width in H.264") << Util::CodecH264 << "161x96" << "x";
        QTest::newRow("odd height in AV1") << Util::CodecAV1_YUV420P << "160x97" << "x";
        QTest::newRow("too small for H.264") << Util::CodecH264 << "8x8" << "x";
        QTest::newRow("too large for a film") << Util::CodecH264 << "65534x65534" << "x";
    }

    void whatCannotBeMadeEndsTheJobAndLeavesNoFile()
    {
        QFETCH(const Util::Codec, codec);
        QFETCH(const QString, res);
        QFETCH(const QString, name);
        QVERIFY(openTake(0));
        m_fixture->take->resValue()->updateValue(res);
        SaveJob *job = m_fixture->film(codec, 0, 3, name);
        QCOMPARE(job->state(), SaveJob::Error);
        QCOMPARE(job->error(), u"can't open file for writing"_s);
        QCOMPARE(m_fixture->files(), QStringList());
    }

    void sizesThatAreNoMultipleOf16AreRightInRawFilms()
    {
        for (const QString &res : {u"72x50"_s, u"136x34"_s}) {
            QVERIFY(openTake(1, 9, res));
            const QByteArray shown = FilmFixture::bgr(m_fixture->shown(3));
            QVERIFY(!shown.isEmpty());
            SaveJob *job = m_fixture->film(Util::CodecRaw_BGR24, 3, 1);
            QTRY_COMPARE(job->state(), SaveJob::Done);
            const ForeignFilm film(path(Util::CodecRaw_BGR24));
            QCOMPARE(film.size(), m_fixture->take->resValue()->variant().toString());
            QVERIFY(film.decoded(u"bgr24"_s) == shown);
        }
    }

    void openOfADoneSavePlaysIt()
    {
        QVERIFY(openTake(0));
        UrlCatcher catcher;
        SaveJob *job = m_fixture->film(Util::CodecH264, 0, 2);
        job->open(); // not done yet
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(catcher.urls, QList<QUrl>());
        job->open();
        QCOMPARE(catcher.urls.size(), 1);
        QCOMPARE(catcher.urls.first().toLocalFile(), path(Util::CodecH264));
    }

    void savesOfOneNameAtOnceTakeNoFileFromEachOther()
    {
        QVERIFY(openTake(0));
        VeskFile *file = m_fixture->openSaved(50);
        QVERIFY(file);
        QList<SaveJob *> jobs;
        for (int i = 0; i < 4; ++i)
            jobs.append(m_fixture->film(Util::CodecH264, 0, 50, u"shot"_s, file));
        for (const SaveJob *job : jobs)
            QTRY_COMPARE_WITH_TIMEOUT(job->state(), SaveJob::Done, 30000);
        file->close();
        QTRY_COMPARE(VeskApp::instance()->veskObjModel()->size(), 0);
        QCOMPARE(m_fixture->files(), QStringList({u"shot (2).mp4"_s, u"shot (3).mp4"_s, u"shot (4).mp4"_s,
                                                  u"shot.mp4"_s, u"source.vesk"_s}));
    }
};

VESK_TEST_MAIN(TestVideoFileSave)
#include "tst_video_file_save.moc"
