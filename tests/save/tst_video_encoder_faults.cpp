#include "save/video_encoder.h"
#include "tests/save/foreign_film.h"
#include "tests/save/test_images.h"
#include "tests/support/vesk_test_main.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{
/** The function of the library, or of the system, that is to fail; and how many calls go well before. */
std::atomic<const char *> s_failing = nullptr;
std::atomic<int> s_callsBefore = 0;
/** Containers have packets of their own before that. */
std::atomic<bool> s_encoderSought = false;
/** What the encoder was last opened with, in that order. */
QStringList s_options;

bool fails(const char *function)
{
    const char *failing = s_failing;
    return failing && qstrcmp(failing, function) == 0 && s_callsBefore-- <= 0;
}

template <class Function> Function *real(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}
} // namespace

// These stand in the place of the libraries' own, for this program and the libraries in it.
extern "C" {
int avformat_alloc_output_context2(AVFormatContext **context, const AVOutputFormat *format, const char *name,
                                   const char *file)
{
    if (fails("avformat_alloc_output_context2"))
        return AVERROR(ENOMEM);
    return real<decltype(avformat_alloc_output_context2)>(__func__)(context, format, name, file);
}

const AVCodec *avcodec_find_encoder_by_name(const char *name)
{
    s_encoderSought = true;
    return fails(name) ? nullptr : real<decltype(avcodec_find_encoder_by_name)>(__func__)(name);
}

AVPacket *av_packet_alloc()
{
    return s_encoderSought && fails(__func__) ? nullptr : real<decltype(av_packet_alloc)>(__func__)();
}

AVStream *avformat_new_stream(AVFormatContext *context, const AVCodec *codec)
{
    return fails(__func__) ? nullptr : real<decltype(avformat_new_stream)>(__func__)(context, codec);
}

AVCodecContext *avcodec_alloc_context3(const AVCodec *codec)
{
    return fails(__func__) ? nullptr : real<decltype(avcodec_alloc_context3)>(__func__)(codec);
}

int avcodec_open2(AVCodecContext *context, const AVCodec *codec, AVDictionary **options)
{
    s_options.clear();
    const AVDictionaryEntry *entry = nullptr;
    while ((entry = av_dict_iterate(*options, entry)))
        s_options.append(QString::fromUtf8(entry->key) + u'=' + QString::fromUtf8(entry->value));
    return fails(__func__) ? AVERROR(EINVAL)
                           : real<decltype(avcodec_open2)>(__func__)(context, codec, options);
}

int av_frame_get_buffer(AVFrame *frame, int align)
{
    return fails(__func__) ? AVERROR(ENOMEM) : real<decltype(av_frame_get_buffer)>(__func__)(frame, align);
}

int avcodec_parameters_from_context(AVCodecParameters *parameters, const AVCodecContext *context)
{
    if (fails(__func__))
        return AVERROR(ENOMEM);
    return real<decltype(avcodec_parameters_from_context)>(__func__)(parameters, context);
}

int avformat_write_header(AVFormatContext *context, AVDictionary **options)
{
    return fails(__func__) ? AVERROR(EIO) : real<decltype(avformat_write_header)>(__func__)(context, options);
}

int sws_scale(SwsContext *context, const uint8_t *const *source, const int *sourceStride, int y, int height,
              uint8_t *const *target, const int *targetStride)
{
    if (fails(__func__))
        return AVERROR(EINVAL);
    return real<decltype(sws_scale)>(__func__)(context, source, sourceStride, y, height, target,
                                               targetStride);
}

int avcodec_send_frame(AVCodecContext *context, const AVFrame *frame)
{
    return fails(__func__) ? AVERROR(EINVAL) : real<decltype(avcodec_send_frame)>(__func__)(context, frame);
}

/** An encoder that swallows what it gets. */
int avcodec_receive_packet(AVCodecContext *context, AVPacket *packet)
{
    const int code = real<decltype(avcodec_receive_packet)>(__func__)(context, packet);
    if (code < 0 || !fails(__func__))
        return code;
    av_packet_unref(packet);
    return real<decltype(avcodec_receive_packet)>(__func__)(context, packet);
}

int av_write_trailer(AVFormatContext *context)
{
    const int code = real<decltype(av_write_trailer)>(__func__)(context);
    return fails(__func__) ? AVERROR(EIO) : code;
}

/** As over a network, only here it tells that what was written before is lost. */
int close(int handle)
{
    const auto result = int(syscall(SYS_close, handle));
    if (!fails(__func__))
        return result;
    errno = EIO;
    return -1;
}

/** As on a file system that keeps no room ahead. */
int fallocate(int handle, int mode, off_t offset, off_t size)
{
    if (!fails(__func__))
        return int(syscall(SYS_fallocate, handle, mode, offset, size));
    errno = EOPNOTSUPP;
    return -1;
}
}

/** What the libraries and the disk refuse, and what they are asked for. */
class TestVideoEncoderFaults : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString path() const { return m_folder->filePath(u"film"_s); }

    std::unique_ptr<VideoEncoder> encoder(Util::Codec codec, int width = 64, int height = 64,
                                          int quality = 15) const
    {
        const bool raw = codec == Util::CodecRaw_BGR24 || codec == Util::CodecRaw_Gray8;
        return std::make_unique<VideoEncoder>(
            path(), width, height, 0, raw ? Util::FormatAvi : Util::FormatMp4, codec, 30.0, quality, nullptr);
    }

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        s_encoderSought = false;
    }
    void cleanup()
    {
        s_failing = nullptr;
        m_folder.reset();
    }

    void whatCannotBeOpenedIsToldInTheLogAndLeavesNoFile_data()
    {
        QTest::addColumn<QByteArray>("function");
        QTest::addColumn<int>("callsBefore");
        QTest::addColumn<QStringList>("log");
        const QString stream = u"openStream failed!"_s;
        const QString codec = u"openCodec failed!"_s;
        QTest::newRow("container") << QByteArray("avformat_alloc_output_context2") << 0
                                   << QStringList(u"avformat_alloc_output_context2 failed!"_s);
        QTest::newRow("encoder") << QByteArray("libopenh264") << 0
                                 << QStringList({u"avcodec_find_encoder failed!"_s, stream});
        QTest::newRow("packet") << QByteArray("av_packet_alloc") << 0
                                << QStringList({u"av_packet_alloc failed!"_s, stream});
        QTest::newRow("stream") << QByteArray("avformat_new_stream") << 0
                                << QStringList({u"avformat_new_stream failed!"_s, stream});
        QTest::newRow("context") << QByteArray("avcodec_alloc_context3") << 0
                                 << QStringList({u"avcodec_alloc_context3 failed!"_s, stream});
        QTest::newRow("codec") << QByteArray("avcodec_open2") << 0
                               << QStringList({u"avcodec_open2 failed: Invalid argument"_s, codec});
        QTest::newRow("frame") << QByteArray("av_frame_get_buffer") << 0
                               << QStringList(
                                      {u"av_frame_get_buffer failed: -12"_s, u"frameAlloc failed!"_s, codec});
        QTest::newRow("second frame")
            << QByteArray("av_frame_get_buffer") << 1
            << QStringList({u"av_frame_get_buffer failed: -12"_s, u"frameAlloc (temp) failed!"_s, codec});
        QTest::newRow("parameters") << QByteArray("avcodec_parameters_from_context") << 0
                                    << QStringList({u"avcodec_parameters_from_context failed!"_s, codec});
        QTest::newRow("header") << QByteArray("avformat_write_header") << 0
                                << QStringList(u"avformat_write_header failed!"_s);
    }

    void whatCannotBeOpenedIsToldInTheLogAndLeavesNoFile()
    {
        QFETCH(const QByteArray, function);
        QFETCH(const int, callsBefore);
        QFETCH(const QStringList, log);
        const auto film = encoder(Util::CodecH264);
        for (const QString &line : log)
            QTest::ignoreMessage(QtDebugMsg, line.toLatin1().constData());
        s_callsBefore = callsBefore;
        s_failing = function.constData();
        QVERIFY(!film->open());
        s_failing = nullptr;
        QVERIFY(!film->isOpen());
        QVERIFY(!QFileInfo::exists(path()));
    }

    void oneEncoderThatIsMissingLeavesTheOthers()
    {
        s_failing = "libsvtav1";
        for (const Util::Codec codec : {Util::CodecAV1_YUV420P, Util::CodecAV1_YUV420P10}) {
            QTest::ignoreMessage(QtDebugMsg, "avcodec_find_encoder failed!");
            QTest::ignoreMessage(QtDebugMsg, "openStream failed!");
            QVERIFY(!encoder(codec)->open());
        }
        for (const Util::Codec codec : {Util::CodecRaw_BGR24, Util::CodecRaw_Gray8, Util::CodecH264}) {
            const auto film = encoder(codec);
            QVERIFY(film->open() && film->write(TestImages::bars(64, 64)) >= 0 && film->close());
            QCOMPARE(ForeignFilm(path()).frames(), 1);
            QVERIFY(QFile::remove(path()));
        }
    }

    void optionsAreThoseOfTheCodec_data()
    {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("quality");
        QTest::addColumn<QStringList>("options");
        const auto h264 = [](const QString &qmin, const QString &qmax) {
            return QStringList({u"="_s, u"rc_mode=quality"_s, u"qmin="_s + qmin, u"qmax="_s + qmax,
                                u"complexity=2"_s, u"profile=high"_s, u"coder=cabac"_s,
                                u"allow_skip_frames=false"_s, u"loopfilter=1"_s});
        };
        QTest::newRow("BGR24") << 1 << 64 << 48 << 15
                               << QStringList({u"="_s, u"video_size=64x48"_s, u"flipped_raw_rgb=1"_s});
        QTest::newRow("Gray8") << 3 << 33 << 48 << 15 << QStringList({u"="_s, u"video_size=33x48"_s});
        QTest::newRow("AV1") << 4 << 1920 << 1080 << 47
                             << QStringList({u"="_s, u"crf=47"_s, u"preset=5"_s, u"color_primaries=bt709"_s});
        QTest::newRow("AV1, high") << 5 << 64 << 1081 << 1
                                   << QStringList(
                                          {u"="_s, u"crf=1"_s, u"preset=5"_s, u"color_primaries=bt2020"_s});
        QTest::newRow("AV1, wide") << 4 << 1921 << 64 << 1
                                   << QStringList(
                                          {u"="_s, u"crf=1"_s, u"preset=5"_s, u"color_primaries=bt2020"_s});
        QTest::newRow("H.264") << 6 << 64 << 64 << 15 << h264(u"15"_s, u"20"_s);
        QTest::newRow("H.264, best") << 6 << 64 << 64 << 1 << h264(u"1"_s, u"6"_s);
        QTest::newRow("H.264, qmax at its limit") << 6 << 64 << 64 << 47 << h264(u"47"_s, u"51"_s);
        QTest::newRow("H.264, worst") << 6 << 64 << 64 << 51 << h264(u"51"_s, u"51"_s);
    }

    void optionsAreThoseOfTheCodec()
    {
        QFETCH(const int, codec);
        QFETCH(const int, width);
        QFETCH(const int, height);
        QFETCH(const int, quality);
        encoder(Util::Codec(codec), width, height, quality)->open();
        QTEST(s_options, "options");
    }

    void pictureThatCannotBeConvertedIsRefused()
    {
        const auto film = encoder(Util::CodecH264);
        QVERIFY(film->open());
        s_failing = "sws_scale";
        QTest::ignoreMessage(QtDebugMsg, "bad sws_scale");
        QTest::ignoreMessage(QtDebugMsg, "getVideoFrame failed!");
        QVERIFY(film->write(TestImages::bars(64, 64)) < 0);
        s_failing = nullptr;
        QVERIFY(film->write(TestImages::bars(64, 64)) >= 0);
        QVERIFY(film->close());
        QCOMPARE(ForeignFilm(path()).frames(), 1);
    }

    void frameThatTheEncoderRefusesIsAFailure()
    {
        const auto film = encoder(Util::CodecH264);
        QVERIFY(film->open() && film->write(TestImages::bars(64, 64)) >= 0);
        s_failing = "avcodec_send_frame";
        QVERIFY(film->write(TestImages::bars(64, 64)) < 0);
        s_failing = nullptr;
        // The film has not all that it was given, but what it has can be played.
        QVERIFY(!film->close());
        QCOMPARE(ForeignFilm(path()).frames(), 1);
    }

    void frameThatTheEncoderSwallowsIsMissed()
    {
        const auto film = encoder(Util::CodecRaw_Gray8);
        QVERIFY(film->open());
        for (int i = 0; i < 3; ++i) {
            s_failing = i == 1 ? "avcodec_receive_packet" : nullptr;
            QVERIFY(film->write(TestImages::bars(64, 64)) >= 0);
        }
        QVERIFY(!film->close());
    }

    void endThatCannotBeWrittenIsAFailure_data()
    {
        QTest::addColumn<QByteArray>("function");
        QTest::newRow("end of the container") << QByteArray("av_write_trailer");
        QTest::newRow("close") << QByteArray("close");
        QTest::newRow("flush of the encoder") << QByteArray("avcodec_send_frame");
    }

    void endThatCannotBeWrittenIsAFailure()
    {
        QFETCH(const QByteArray, function);
        for (const Util::Codec codec : {Util::CodecRaw_BGR24, Util::CodecAV1_YUV420P, Util::CodecH264}) {
            const auto film = encoder(codec);
            QVERIFY(film->open() && film->write(TestImages::bars(64, 64)) >= 0);
            s_callsBefore = 0;
            s_failing = function.constData();
            QVERIFY(!film->close());
            s_failing = nullptr;
            QVERIFY(!film->isOpen());
            QVERIFY(QFile::remove(path()));
        }
    }

    void fileThatIsDeletedMeanwhileIsMissed()
    {
        const auto film = encoder(Util::CodecH264);
        QVERIFY(film->open() && film->write(TestImages::bars(64, 64)) >= 0);
        QVERIFY(QFile::remove(path()));
        QVERIFY(!film->close());
    }

    void diskThatKeepsNoRoomAheadIsGoodEnough()
    {
        s_callsBefore = 0;
        s_failing = "fallocate";
        const auto film = encoder(Util::CodecH264);
        QVERIFY(film->open() && film->write(TestImages::bars(64, 64)) >= 0 && film->close());
        QCOMPARE(ForeignFilm(path()).frames(), 1);
    }

    void roomThatIsKeptAheadIsGivenBack()
    {
        const auto film = encoder(Util::CodecRaw_Gray8);
        QVERIFY(film->open() && film->write(TestImages::bars(64, 64)) >= 0);
        const auto blocks = [this] {
            struct stat status{};
            return stat(path().toLocal8Bit().constData(), &status) == 0 ? status.st_blocks * 512 : -1;
        };
        QVERIFY(blocks() > 65536);
        QVERIFY(film->close());
        QVERIFY2(blocks() < 65536, qPrintable(QString::number(blocks())));
    }
};

VESK_TEST_MAIN(TestVideoEncoderFaults)
#include "tst_video_encoder_faults.moc"
