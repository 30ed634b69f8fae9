#include "tests/save/encoded_films.h"
#include "tests/save/foreign_film.h"
#include "tests/support/vesk_test_main.h"

using namespace Qt::StringLiterals;

/** The pictures of films that the test makes itself, as ffmpeg shows them. */
class TestVideoPictures : public QObject, private EncodedFilms
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup() { m_folder.reset(); }

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

    void smallAv1KeepsItsColorsInTheMiddle_data()
    {
        QTest::addColumn<int>("codec");
        QTest::newRow("8 bits") << int(Util::CodecAV1_YUV420P);
        QTest::newRow("10 bits") << int(Util::CodecAV1_YUV420P10);
    }

    void smallAv1KeepsItsColorsInTheMiddle()
    {
        QFETCH(const int, codec);
        // Quarters of the picture: blue, green; red, white.
        QList<ushort> image;
        for (int i = 0; i < 32 * 32; ++i) {
            const int quarter = (i % 32) / 16 + 2 * (i / 32 / 16);
            for (int channel = 0; channel < 3; ++channel)
                image.append(quarter == channel || quarter == 3 ? 60000 : 0);
        }
        const Order order = {.width = 32, .height = 32, .codec = Util::Codec(codec), .quality = 1};
        QVERIFY(encode(order, Images(3, image)));
        const QByteArray film = ForeignFilm(path(order)).decoded(u"bgr24"_s);
        QCOMPARE(film.size(), 3 * 64 * 64 * 3);
        // Away from the edges, where neighbours share their colour. 60000 of 65535 are 233 of 255.
        for (int quarter = 0; quarter < 4; ++quarter) {
            const int left = 16 + 16 * (quarter % 2);
            const int top = 16 + 16 * (quarter / 2);
            for (int i = 0; i < 8 * 8; ++i) {
                const int at = 3 * ((top + 4 + i / 8) * 64 + left + 4 + i % 8);
                for (int channel = 0; channel < 3; ++channel) {
                    const int expected = quarter == channel || quarter == 3 ? 233 : 0;
                    const int value = uchar(film[at + channel]);
                    QVERIFY2(
                        qAbs(value - expected) <= 10,
                        qPrintable(u"quarter %1, channel %2: %3"_s.arg(quarter).arg(channel).arg(value)));
                }
            }
        }
    }

    void everyFrameOfACodedFilmIsInItsPlace_data()
    {
        QTest::addColumn<int>("codec");
        QTest::newRow("AV1") << int(Util::CodecAV1_YUV420P);
        QTest::newRow("AV1 of 10 bits") << int(Util::CodecAV1_YUV420P10);
        QTest::newRow("H.264") << int(Util::CodecH264);
    }

    /** A bright bar stands as many times eight pixels from the left as its frame's number says. */
    void everyFrameOfACodedFilmIsInItsPlace()
    {
        QFETCH(const int, codec);
        constexpr int count = 75;
        constexpr int width = 8 * count;
        Images images;
        for (int frame = 0; frame < count; ++frame) {
            QList<ushort> image;
            for (int i = 0; i < width * 64; ++i)
                image.insert(image.size(), 3, i % width / 8 == frame ? 60000 : 5000);
            images.append(image);
        }
        const Order order = {.width = width, .height = 64, .codec = Util::Codec(codec)};
        QVERIFY(encode(order, images));
        const QByteArray film = ForeignFilm(path(order)).decoded(u"gray"_s);
        QCOMPARE(film.size(), count * width * 64);
        for (int frame = 0; frame < count; ++frame) {
            const QByteArrayView row = QByteArrayView(film).sliced((frame * 64 + 32) * width, width);
            for (int bar = 0; bar < count; ++bar)
                QCOMPARE(uchar(row[8 * bar + 4]) > 128, bar == frame);
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
};

VESK_TEST_MAIN(TestVideoPictures)
#include "tst_video_pictures.moc"
