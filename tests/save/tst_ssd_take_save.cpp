#include "tests/save/film_fixture.h"
#include "tests/save/foreign_tiff.h"
#include "tests/support/vesk_test_main.h"

#include "take/ssd_take.h"

using namespace Qt::StringLiterals;

/** Recordings on the drive of a simulated camera as films, images and native files. */
class TestSsdTakeSave : public QObject
{
    Q_OBJECT

private:
    static constexpr int First = -2;
    static constexpr int Count = 5;

    std::unique_ptr<FilmFixture> m_fixture;
    SsdTake *m_recording = nullptr;

    /** The camera writes a part of its take to its drive; what it wrote is opened. */
    void openRecording()
    {
        m_fixture = std::make_unique<FilmFixture>(1);
        QVERIFY(m_fixture->open());
        Camera *camera = m_fixture->camera.get();
        QTRY_COMPARE(camera->ssdStateValue()->variant().toInt(), int(Camera::SsdReady));
        SaveJob *written =
            m_fixture->manager->createSaveJob(m_fixture->take, -5, 12, SaveManager::SsdDest, Util::FormatVesk,
                                              Util::CodecVesk, 0.0, 0, u"run"_s, {});
        QTRY_COMPARE(written->state(), SaveJob::Done);
        written->open();
        QTRY_COMPARE(camera->ssdTakes()->size(), 1);
        m_recording = qobject_cast<SsdTake *>(camera->ssdTakes()->get(0));
        QTRY_VERIFY(m_recording->valuesInit());
        QCOMPARE(m_recording->aFr(), -5);
        QCOMPARE(m_recording->bFr(), 6);
    }

    /** Pictures of the frames that are saved, as the view of the take shows them. */
    QList<QImage> shown()
    {
        QList<QImage> images;
        for (int fr = First; fr < First + Count; ++fr)
            images.append(m_fixture->shown(fr).copy());
        return images;
    }

private slots:
    void init() { openRecording(); }
    void cleanup() { m_fixture.reset(); }

    void filmShowsWhatTheTakeShowed()
    {
        QByteArray pictures;
        for (const QImage &image : shown())
            pictures += FilmFixture::bgr(image);
        SaveJob *job = m_fixture->film(Util::CodecRaw_BGR24, First, Count, u"shot"_s, m_recording);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QCOMPARE(job->sourceType(), SaveJob::SsdTakeSourceType);
        QCOMPARE(job->sourceFileName(), u"run.vesk"_s);
        const ForeignFilm film(m_fixture->path(u"shot.avi"_s));
        QCOMPARE(film.size(), u"160x96"_s);
        QCOMPARE(film.frames(), Count);
        QCOMPARE(film.stream("r_frame_rate"), u"30000/1001"_s);
        QVERIFY(film.decoded(u"bgr24"_s) == pictures);
    }

    void filmIsThatOfTheTake_data() { FilmFixture::addCodecs(); }

    void filmIsThatOfTheTake()
    {
        QFETCH(const Util::Codec, codec);
        SaveJob *recorded = m_fixture->film(codec, First, Count, u"recorded"_s, m_recording);
        SaveJob *taken = m_fixture->film(codec, First, Count, u"taken"_s);
        QTRY_COMPARE(recorded->state(), SaveJob::Done);
        QTRY_COMPARE(taken->state(), SaveJob::Done);
        const QString extension = FilmFixture::extension(codec);
        const ForeignFilm ofRecording(m_fixture->path(u"recorded"_s + extension));
        const ForeignFilm ofTake(m_fixture->path(u"taken"_s + extension));
        QCOMPARE(ofRecording.frames(), Count);
        QCOMPARE(ofRecording.stream("codec_name"), ofTake.stream("codec_name"));
        QCOMPARE(ofRecording.stream("pix_fmt"), ofTake.stream("pix_fmt"));
        const QByteArray decoded = ofRecording.decoded(u"rgb24"_s);
        QCOMPARE(decoded.size(), Count * 160 * 96 * 3);
        QVERIFY(decoded == ofTake.decoded(u"rgb24"_s));
    }

    void imagesShowWhatTheTakeShowed()
    {
        const QList<QImage> pictures = shown();
        SaveJob *job = m_fixture->manager->createSaveJob(m_recording, First, Count, SaveManager::FileDest,
                                                         Util::FormatTiff, Util::CodecRaw_RGB24, 0.0, 0,
                                                         u"i<fr>"_s, m_fixture->folder);
        QTRY_COMPARE(job->state(), SaveJob::Done);
        QStringList names;
        for (int fr = First; fr < First + Count; ++fr)
            names.append(u"i%1.tiff"_s.arg(fr));
        for (int i = 0; i < Count; ++i) {
            const ForeignTiff image = ForeignTiff::read(m_fixture->path(names.at(i)));
            QCOMPARE(QSize(image.width, image.height), QSize(160, 96));
            QVERIFY(image.rgb == FilmFixture::samples(pictures.at(i), &qRed, &qGreen, &qBlue));
        }
        QStringList files = m_fixture->files();
        names.sort();
        QCOMPARE(files, names);
    }

    void closedRecordingEndsItsFilm()
    {
        m_fixture->fault({.kind = q4sim::FaultKind::Drip, .ms = 100, .bytes = FilmFixture::RecordSize});
        SaveJob *job = m_fixture->film(Util::CodecH264, -5, 12, u"shot"_s, m_recording);
        QTRY_VERIFY(job->progress() > 0.0);
        m_recording->fclose();
        QTRY_COMPARE(job->state(), SaveJob::Error);
        // The closing or the broken answer, whichever is first.
        QVERIFY2(job->error() == u"take deleted or closed" || job->error() == u"HTTP 200",
                 qPrintable(job->error()));
        m_fixture->fault({});
        SaveJob *next = m_fixture->film(Util::CodecH264, First, Count, u"next"_s);
        QTRY_COMPARE(next->state(), SaveJob::Done);
    }
};

VESK_TEST_MAIN(TestSsdTakeSave)
#include "tst_ssd_take_save.moc"
