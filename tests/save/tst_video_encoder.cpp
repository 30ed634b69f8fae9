#include "save/video_encoder.h"
#include "tests/save/foreign_film.h"
#include "tests/save/test_images.h"
#include "tests/support/vesk_test_main.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

using Images = QList<QList<ushort>>;

/** Films of images that the test makes itself, read by ffprobe and ffmpeg. */
class TestVideoEncoder : public QObject
{
    Q_OBJECT

private:
    struct Order {
        int width;
        int height;
        Util::Codec codec;
        double frameRate = 30.0;
        int quality = 15;
        QString name = u"film"_s;

        Util::Format format() const
        {
            return codec == Util::CodecRaw_BGR24 || codec == Util::CodecRaw_Gray8 ? Util::FormatAvi
                                                                                  : Util::FormatMp4;
        }
    };

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const Order &order) const
    {
        return m_folder->filePath(order.name + (order.format() == Util::FormatAvi ? u".avi"_s : u".mp4"_s));
    }

    std::unique_ptr<VideoEncoder> encoder(const Order &order) const
    {
        return std::make_unique<VideoEncoder>(path(order), order.width, order.height, 32, order.format(),
                                              order.codec, order.frameRate, order.quality, nullptr);
    }

    /** Whether all went well. */
    bool encode(const Order &order, const Images &images) const
    {
        const auto film = encoder(order);
        if (!film->open())
            return false;
        for (const QList<ushort> &image : images) {
            if (film->write(image) < 0)
                return false;
        }
        return film->close();
    }

    static Images movingImages(int width, int height, int count)
    {
        Images images;
        for (int i = 0; i < count; ++i)
            images.append(TestImages::moving(width, height, i));
        return images;
    }

    static QByteArray bgr24(const Images &images)
    {
        QByteArray bytes;
        for (const QList<ushort> &image : images)
            bytes += TestImages::bgr24(image);
        return bytes;
    }

    static void addCodecs()
    {
        QTest::addColumn<int>("codec");
        QTest::newRow("BGR24") << int(Util::CodecRaw_BGR24);
        QTest::newRow("Gray8") << int(Util::CodecRaw_Gray8);
        QTest::newRow("AV1") << int(Util::CodecAV1_YUV420P);
        QTest::newRow("AV1 of 10 bits") << int(Util::CodecAV1_YUV420P10);
        QTest::newRow("H.264") << int(Util::CodecH264);
    }

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

    void rawColorIsTheImageAtEightBitsWhateverItsWidth_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        for (const int width : {1, 2, 3, 15, 16, 17, 18, 20, 33, 63, 64, 65, 66, 100, 101, 130})
            QTest::addRow("%d wide", width) << width << 1 + width % 7;
        QTest::newRow("high") << 4 << 101;
    }

    void rawColorIsTheImageAtEightBitsWhateverItsWidth()
    {
        QFETCH(const int, width);
        QFETCH(const int, height);
        const Images images = {TestImages::noise(width, height, 1), TestImages::noise(width, height, 2),
                               TestImages::bars(width, height)};
        const Order order = {.width = width, .height = height, .codec = Util::CodecRaw_BGR24};
        QVERIFY(encode(order, images));
        QVERIFY(ForeignFilm(path(order)).decoded(u"bgr24"_s) == bgr24(images));
    }

    void everySampleLosesDepthToTheNearest()
    {
        QList<ushort> image;
        for (int sample = 0; sample < 65536; ++sample)
            image.append({ushort(sample), ushort(sample), ushort(sample)});
        const Order color = {.width = 256, .height = 256, .codec = Util::CodecRaw_BGR24, .name = u"c"_s};
        const Order gray = {.width = 256, .height = 256, .codec = Util::CodecRaw_Gray8, .name = u"g"_s};
        QVERIFY(encode(color, {image}));
        QVERIFY(encode(gray, {image}));
        QVERIFY(ForeignFilm(path(color)).decoded(u"bgr24"_s) == TestImages::bgr24(image));
        QByteArray expected;
        for (int sample = 0; sample < 65536; ++sample)
            expected.append(char(TestImages::eightBits(sample)));
        QVERIFY(ForeignFilm(path(gray)).decoded(u"gray"_s) == expected);
    }

    void grayOfAColorIsItsLuma_data() { rawColorIsTheImageAtEightBitsWhateverItsWidth_data(); }

    void grayOfAColorIsItsLuma()
    {
        QFETCH(const int, width);
        QFETCH(const int, height);
        const QList<ushort> image = TestImages::noise(width, height, 7);
        const Order order = {.width = width, .height = height, .codec = Util::CodecRaw_Gray8};
        QVERIFY(encode(order, {image}));
        const QByteArray decoded = ForeignFilm(path(order)).decoded(u"gray"_s);
        QCOMPARE(decoded.size(), width * height);
        for (int i = 0; i < width * height; ++i) {
            const double luma = 0.114 * image[3 * i] + 0.587 * image[3 * i + 1] + 0.299 * image[3 * i + 2];
            QVERIFY(std::abs(uchar(decoded[i]) - luma / 257.0) < 0.51);
        }
    }

    void lossIsSmall_data()
    {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("quality");
        QTest::addColumn<QList<double>>("floors"); // dB: bars, ramp, moving scene
        const int av1 = Util::CodecAV1_YUV420P;
        const int av1Deep = Util::CodecAV1_YUV420P10;
        const int h264 = Util::CodecH264;
        QTest::newRow("AV1, best") << av1 << 1 << QList<double>({50, 46, 43});
        QTest::newRow("AV1, usual") << av1 << 15 << QList<double>({48, 45, 42});
        QTest::newRow("AV1 of 10 bits, best") << av1Deep << 1 << QList<double>({52, 44, 45});
        QTest::newRow("AV1 of 10 bits, usual") << av1Deep << 15 << QList<double>({50, 43, 44});
        QTest::newRow("H.264, best") << h264 << 1 << QList<double>({52, 47, 43});
        QTest::newRow("H.264, usual") << h264 << 15 << QList<double>({50, 46, 42});
    }

    void lossIsSmall()
    {
        QFETCH(const int, codec);
        QFETCH(const int, quality);
        QFETCH(const QList<double>, floors);
        const int width = 320;
        const int height = 240;
        const Images scenes[] = {Images(12, TestImages::bars(width, height)),
                                 Images(12, TestImages::ramp(width, height)),
                                 movingImages(width, height, 12)};
        for (int i = 0; i < 3; ++i) {
            const Order order = {.width = width,
                                 .height = height,
                                 .codec = Util::Codec(codec),
                                 .quality = quality,
                                 .name = QString::number(i)};
            QVERIFY(encode(order, scenes[i]));
            const double loss =
                TestImages::psnr(ForeignFilm(path(order)).decoded(u"bgr24"_s), bgr24(scenes[i]));
            QVERIFY2(loss > floors[i], qPrintable(u"scene %1: %2 dB"_s.arg(i).arg(loss)));
        }
    }

    void tenBitsHoldMoreLevelsThanEight()
    {
        const Order order = {.width = 640, .height = 64, .codec = Util::CodecAV1_YUV420P10, .quality = 1};
        QVERIFY(encode(order, Images(3, TestImages::ramp(640, 64))));
        const QByteArray luma = ForeignFilm(path(order)).decoded(u"gray10le"_s);
        QSet<int> levels;
        for (int x = 0; x < 640; ++x)
            levels.insert(uchar(luma[2 * (640 * 32 + x)]) + 256 * uchar(luma[2 * (640 * 32 + x) + 1]));
        QVERIFY2(levels.size() > 400, qPrintable(QString::number(levels.size())));
    }

    void smallAv1StandsInTheMiddleOfBlack_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<QString>("coded");
        QTest::newRow("square") << 32 << 32 << "64x64";
        QTest::newRow("odd") << 33 << 21 << "64x64"; // margins 15 and 21, 16 and 22 on the far sides
        QTest::newRow("wide") << 100 << 50 << "100x64";
        QTest::newRow("high") << 32 << 128 << "64x128";
        QTest::newRow("one pixel") << 1 << 1 << "64x64";
    }

    void smallAv1StandsInTheMiddleOfBlack()
    {
        QFETCH(const int, width);
        QFETCH(const int, height);
        const Order order = {.width = width, .height = height, .codec = Util::CodecAV1_YUV420P, .quality = 1};
        QVERIFY(encode(order, Images(3, QList<ushort>(qsizetype(width) * height * 3, 65535))));
        const ForeignFilm film(path(order));
        QTEST(film.size(), "coded");
        const int codedWidth = std::max(width, 64);
        const int codedHeight = std::max(height, 64);
        const int left = (codedWidth - width) / 2;
        const int top = (codedHeight - height) / 2;
        const QByteArray gray = film.decoded(u"gray"_s);
        QCOMPARE(gray.size(), 3 * codedWidth * codedHeight);
        for (int y = 0; y < codedHeight; ++y) {
            for (int x = 0; x < codedWidth; ++x) {
                const bool inside = x >= left && x < left + width && y >= top && y < top + height;
                const int value = uchar(gray[y * codedWidth + x]);
                QVERIFY2(inside ? value > 240 : value < 15,
                         qPrintable(u"%1 at %2, %3"_s.arg(value).arg(x).arg(y)));
            }
        }
    }

    void codedPictureIsRightWhateverItsSize_data()
    {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<bool>("taken");
        for (const int codec : {Util::CodecAV1_YUV420P, Util::CodecAV1_YUV420P10, Util::CodecH264}) {
            for (const QSize size : {QSize(64, 64), QSize(66, 70), QSize(100, 68), QSize(130, 66),
                                     QSize(164, 98), QSize(72, 68)})
                QTest::addRow("codec %d, %d x %d", codec, size.width(), size.height())
                    << codec << size.width() << size.height() << true;
            for (const QSize size : {QSize(65, 64), QSize(64, 65), QSize(101, 75)})
                QTest::addRow("codec %d, %d x %d", codec, size.width(), size.height())
                    << codec << size.width() << size.height() << false;
            QTest::addRow("codec %d, no size", codec) << codec << 0 << 0 << false;
        }
        const int h264 = Util::CodecH264;
        QTest::newRow("H.264, smallest") << h264 << 16 << 16 << true;
        QTest::newRow("H.264, not a multiple of 16") << h264 << 18 << 34 << true;
        QTest::newRow("H.264, too small") << h264 << 14 << 64 << false;
        QTest::newRow("H.264, too small, odd") << h264 << 15 << 15 << false;
        QTest::newRow("BGR24, no size") << int(Util::CodecRaw_BGR24) << 0 << 4 << false;
        QTest::newRow("Gray8, no size") << int(Util::CodecRaw_Gray8) << 4 << 0 << false;
    }

    void codedPictureIsRightWhateverItsSize()
    {
        QFETCH(const int, codec);
        QFETCH(const int, width);
        QFETCH(const int, height);
        QFETCH(const bool, taken);
        const Order order = {.width = width, .height = height, .codec = Util::Codec(codec), .quality = 1};
        const Images images = movingImages(width, height, 3);
        QCOMPARE(encode(order, images), taken);
        QCOMPARE(QFileInfo::exists(path(order)), taken);
        if (!taken)
            return;
        const ForeignFilm film(path(order));
        QCOMPARE(film.size(), u"%1x%2"_s.arg(width).arg(height));
        const double loss = TestImages::psnr(film.decoded(u"bgr24"_s), bgr24(images));
        QVERIFY2(loss > 36.0, qPrintable(QString::number(loss)));
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
