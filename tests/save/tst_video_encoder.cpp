#include "save/background.h"
#include "tests/save/encoded_films.h"
#include "tests/save/foreign_film.h"
#include "tests/support/vesk_test_main.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSignalSpy>

#include <algorithm>
#include <sched.h>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

/** Films of images that the test makes itself, as ffprobe tells of them, and how they begin and end. */
class TestVideoEncoder : public QObject, private EncodedFilms
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup() { m_folder.reset(); }

    void filmIsWhatWasOrdered_data()
    {
        QTest::addColumn<int>("codec");
        QTest::addColumn<QString>("container");
        QTest::addColumn<QString>("codecName");
        QTest::addColumn<QString>("pixelFormat");
        const QString mp4 = u"mov,mp4,m4a,3gp,3g2,mj2"_s;
        QTest::newRow("BGR24") << 1 << u"avi"_s << u"rawvideo"_s << u"bgr24"_s;
        QTest::newRow("Gray8") << 3 << u"avi"_s << u"rawvideo"_s << u"gray"_s;
        QTest::newRow("AV1") << 4 << mp4 << u"av1"_s << u"yuv420p"_s;
        QTest::newRow("AV1 of 10 bits") << 5 << mp4 << u"av1"_s << u"yuv420p10le"_s;
        QTest::newRow("H.264") << 6 << mp4 << u"h264"_s << u"yuv420p"_s;
    }

    void filmIsWhatWasOrdered()
    {
        QFETCH(const int, codec);
        const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
        const Order order = {.width = 160, .height = 96, .codec = Util::Codec(codec), .name = u"a.b film"_s};
        QVERIFY(encode(order, movingImages(160, 96, 50)));
        const ForeignFilm film(path(order));
        QTEST(film.format("format_name"), "container");
        QTEST(film.stream("codec_name"), "codecName");
        QTEST(film.stream("pix_fmt"), "pixelFormat");
        QCOMPARE(film.size(), u"160x96"_s);
        QCOMPARE(film.frames(), 50);
        QCOMPARE(film.stream("r_frame_rate"), u"30/1"_s);
        QCOMPARE(film.stream("avg_frame_rate"), u"30/1"_s);
        QCOMPARE(film.tag("title"), u"a.b film"_s);
        // The writer of AVI has no field for it, and drops it.
        if (order.format() == Util::FormatMp4) {
            const QDateTime created = QDateTime::fromString(film.tag("creation_time"), Qt::ISODateWithMs);
            QVERIFY2(created >= before && created <= QDateTime::currentDateTimeUtc(),
                     qPrintable(film.tag("creation_time")));
        }
    }

    void rateIsTheFractionThatWasMeant_data()
    {
        QTest::addColumn<double>("frameRate");
        QTest::addColumn<QString>("fraction");
        QTest::newRow("one") << 1.0 << "1/1";
        QTest::newRow("23.976") << 23.976 << "24000/1001";
        QTest::newRow("23.98") << 23.98 << "24000/1001";
        QTest::newRow("24") << 24.0 << "24/1";
        QTest::newRow("29.97") << 29.97 << "30000/1001";
        QTest::newRow("29.970000000001") << 29.970000000001 << "30000/1001";
        QTest::newRow("30") << 30.0 << "30/1";
        QTest::newRow("12.5") << 12.5 << "25/2";
        QTest::newRow("59.94") << 59.94 << "60000/1001";
        QTest::newRow("240") << 240.0 << "240/1";
    }

    void rateIsTheFractionThatWasMeant()
    {
        QFETCH(const double, frameRate);
        for (const Util::Codec codec : {Util::CodecRaw_Gray8, Util::CodecAV1_YUV420P, Util::CodecH264}) {
            const Order order = {.width = 64,
                                 .height = 64,
                                 .codec = codec,
                                 .frameRate = frameRate,
                                 .name = QString::number(codec)};
            QVERIFY(encode(order, movingImages(64, 64, 8)));
            const ForeignFilm film(path(order));
            QTEST(film.stream("r_frame_rate"), "fraction");
            QTEST(film.stream("avg_frame_rate"), "fraction");
            QCOMPARE(film.frames(), 8);
        }
    }

    /** Root, too, whom the encoder for AV1 would give real-time priority. */
    void threadsOfAnEncoderGiveWayToAllOthers()
    {
        const QDir tasks(u"/proc/self/task"_s);
        const auto threads = [&] { return tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot); };
        const QStringList before = threads();
        const Order order = {.width = 320, .height = 240, .codec = Util::CodecAV1_YUV420P};
        const auto film = encoder(order);
        QVERIFY(film->open());
        QCOMPARE_GT(threads().size(), before.size());
        const int own = getpriority(PRIO_PROCESS, 0);
        for (const QString &thread : threads()) {
            QCOMPARE(sched_getscheduler(thread.toInt()), SCHED_OTHER);
            QCOMPARE(getpriority(PRIO_PROCESS, id_t(thread.toInt())),
                     before.contains(thread) ? own : std::max(own, EncoderNiceness));
        }
        QVERIFY(film->close());
    }

    void timeStampsStepByTheRate()
    {
        const QList<qint64> steps = {0, 1, 2, 3};
        const Order mp4 = {.width = 64, .height = 64, .codec = Util::CodecH264, .frameRate = 59.94};
        QVERIFY(encode(mp4, movingImages(64, 64, 4)));
        QCOMPARE(ForeignFilm(path(mp4)).stream("time_base"), u"1/60000"_s);
        QCOMPARE(ForeignFilm(path(mp4)).packets("pts"), QList<qint64>({0, 1001, 2002, 3003}));
        const Order avi = {.width = 64, .height = 64, .codec = Util::CodecRaw_BGR24, .frameRate = 59.94};
        QVERIFY(encode(avi, movingImages(64, 64, 4)));
        QCOMPARE(ForeignFilm(path(avi)).stream("time_base"), u"1001/60000"_s);
        QCOMPARE(ForeignFilm(path(avi)).packets("pts"), steps);
        const Order av1 = {.width = 64,
                           .height = 64,
                           .codec = Util::CodecAV1_YUV420P,
                           .frameRate = 23.976,
                           .name = u"av1"_s};
        QVERIFY(encode(av1, movingImages(64, 64, 4)));
        QCOMPARE(ForeignFilm(path(av1)).stream("time_base"), u"1/24000"_s);
        QCOMPARE(ForeignFilm(path(av1)).packets("pts"), QList<qint64>({0, 1001, 2002, 3003}));
    }

    void filmOfOneFrameLastsAsLongAsThat_data() { addCodecs(); }

    void filmOfOneFrameLastsAsLongAsThat()
    {
        QFETCH(const int, codec);
        const Order order = {.width = 64, .height = 64, .codec = Util::Codec(codec), .frameRate = 25.0};
        QVERIFY(encode(order, movingImages(64, 64, 1)));
        const ForeignFilm film(path(order));
        QCOMPARE(film.frames(), 1);
        QCOMPARE(film.format("duration").toDouble(), 0.04);
    }

    void primariesFollowTheSize_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<QString>("primaries");
        QTest::newRow("small") << 64 << 64 << "bt709";
        QTest::newRow("widest") << 1920 << 64 << "bt709";
        QTest::newRow("too wide") << 1922 << 64 << "bt2020";
        QTest::newRow("highest") << 64 << 1080 << "bt709";
        QTest::newRow("too high") << 64 << 1082 << "bt2020";
    }

    void primariesFollowTheSize()
    {
        QFETCH(const int, width);
        QFETCH(const int, height);
        const Order order = {.width = width, .height = height, .codec = Util::CodecAV1_YUV420P};
        QVERIFY(encode(order, Images(1, QList<ushort>(qsizetype(width) * height * 3, 20000))));
        QTEST(ForeignFilm(path(order)).stream("color_primaries"), "primaries");
    }

    void frameThatIsTooShortIsRefused_data() { addCodecs(); }

    void frameThatIsTooShortIsRefused()
    {
        QFETCH(const int, codec);
        const Order order = {.width = 64, .height = 64, .codec = Util::Codec(codec)};
        const auto film = encoder(order);
        QVERIFY(film->open());
        QVERIFY(film->write(TestImages::ramp(64, 64)) >= 0);
        QTest::ignoreMessage(QtDebugMsg, "getVideoFrame failed!");
        QVERIFY(film->write(QList<ushort>(64 * 64 * 3 - 1)) < 0);
        QVERIFY(film->close());
        QCOMPARE(ForeignFilm(path(order)).frames(), 1);
    }

    void fileThatIsThereIsNotTouched()
    {
        const Order order = {.width = 64, .height = 64, .codec = Util::CodecRaw_BGR24};
        QFile file(path(order));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("mine") == 4);
        file.close();
        QTest::ignoreMessage(QtDebugMsg, "avio_open failed!: File exists");
        QVERIFY(!encoder(order)->open());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("mine"));
    }

    void folderThatIsNotThereIsToldInTheLog()
    {
        const Order order = {.width = 64, .height = 64, .codec = Util::CodecRaw_BGR24, .name = u"no/film"_s};
        QTest::ignoreMessage(QtDebugMsg, "avio_open failed!: No such file or directory");
        const auto film = encoder(order);
        QVERIFY(!film->open());
        QVERIFY(!film->isOpen());
    }

    void openAndCloseAreToldOnce()
    {
        const auto film = encoder({.width = 64, .height = 64, .codec = Util::CodecH264});
        QSignalSpy spy(film.get(), &VideoEncoder::isOpenChanged);
        QVERIFY(!film->property("isOpen").toBool());
        QTest::ignoreMessage(QtDebugMsg, "Not open!");
        QVERIFY(film->write(TestImages::ramp(64, 64)) < 0);
        QVERIFY(film->open());
        QVERIFY(film->property("isOpen").toBool());
        QCOMPARE(spy.size(), 1);
        QVERIFY(film->close());
        QVERIFY(!film->property("isOpen").toBool());
        QCOMPARE(spy.size(), 2);
        QTest::ignoreMessage(QtDebugMsg, "Not open!");
        QVERIFY(film->close());
        QCOMPARE(spy.size(), 2);
    }

    void filmOfNoFramesIsClosed_data() { addCodecs(); }

    void filmOfNoFramesIsClosed()
    {
        QFETCH(const int, codec);
        const Order order = {.width = 64, .height = 64, .codec = Util::Codec(codec)};
        QVERIFY(encode(order, {}));
        QCOMPARE(ForeignFilm(path(order)).frames(), 0);
    }

    void encoderThatIsLeftOpenLeavesItsFile_data() { addCodecs(); }

    void encoderThatIsLeftOpenLeavesItsFile()
    {
        QFETCH(const int, codec);
        const Order order = {.width = 64, .height = 64, .codec = Util::Codec(codec)};
        auto film = encoder(order);
        QVERIFY(film->open() && film->write(TestImages::ramp(64, 64)) >= 0);
        film.reset();
        QVERIFY(QFileInfo::exists(path(order)));
    }

    void discardedFilmLeavesNoFile_data() { addCodecs(); }

    /** At once, whatever the encoder still holds. */
    void discardedFilmLeavesNoFile()
    {
        QFETCH(const int, codec);
        const Order order = {.width = 640, .height = 480, .codec = Util::Codec(codec)};
        const auto film = encoder(order);
        QVERIFY(film->open());
        for (const QList<ushort> &image : movingImages(640, 480, 40))
            QVERIFY(film->write(image) >= 0);
        QSignalSpy told(film.get(), &VideoEncoder::isOpenChanged);
        QElapsedTimer clock;
        clock.start();
        film->discard();
        const qint64 ms = clock.elapsed();
        QVERIFY2(ms < 150, qPrintable(u"%1 ms"_s.arg(ms)));
        QCOMPARE(told.size(), 1);
        QVERIFY(!film->isOpen());
        QVERIFY(!QFileInfo::exists(path(order)));
        film->discard();
        QCOMPARE(told.size(), 1);
    }

    void codecThatTheContainerCannotHoldLeavesNoFile()
    {
        const QString name = m_folder->filePath(u"film.mp4"_s);
        VideoEncoder film(name, 64, 64, 0, Util::FormatMp4, Util::CodecRaw_BGR24, 30.0, 15, nullptr);
        QTest::ignoreMessage(QtDebugMsg, "avformat_write_header failed!");
        QVERIFY(!film.open());
        QVERIFY(!QFileInfo::exists(name));
    }

    void rateThatIsNoneIsRefused_data()
    {
        QTest::addColumn<double>("frameRate");
        QTest::newRow("zero") << 0.0;
        QTest::newRow("negative") << -30.0;
    }

    void rateThatIsNoneIsRefused()
    {
        QFETCH(const double, frameRate);
        for (const Util::Codec codec : {Util::CodecRaw_BGR24, Util::CodecAV1_YUV420P, Util::CodecH264}) {
            const Order order = {.width = 64, .height = 64, .codec = codec, .frameRate = frameRate};
            QVERIFY(!encoder(order)->open());
            QVERIFY(!QFileInfo::exists(path(order)));
        }
    }
};

VESK_TEST_MAIN(TestVideoEncoder)
#include "tst_video_encoder.moc"
