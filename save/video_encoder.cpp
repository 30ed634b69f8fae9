#include "save/video_encoder.h"

#include "app/arithmetic.h"
#include "save/background.h"

#include <QDateTime>
#include <QDebug>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <limits>
#include <system_error>
#include <vector>

namespace
{
struct CodecRow {
    Util::Codec codec;
    AVCodecID codecId;
    AVPixelFormat pixFmt;
};

constexpr CodecRow AnyOtherCodec = {Util::CodecRaw_BGR24, AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_BGR24};
constexpr std::array Codecs = {
    AnyOtherCodec,
    CodecRow{Util::CodecRaw_Gray8, AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_GRAY8},
    CodecRow{Util::CodecAV1_YUV420P, AV_CODEC_ID_AV1, AV_PIX_FMT_YUV420P},
    CodecRow{Util::CodecAV1_YUV420P10, AV_CODEC_ID_AV1, AV_PIX_FMT_YUV420P10LE},
    CodecRow{Util::CodecH264, AV_CODEC_ID_H264, AV_PIX_FMT_YUV420P},
};

const CodecRow &codecRow(Util::Codec codec)
{
    const auto row = std::ranges::find(Codecs, codec, &CodecRow::codec);
    return row == Codecs.end() ? AnyOtherCodec : *row;
}

struct FrameRateRow {
    double requested;
    AVRational frameRate;
};

/** The rates of television, which are no decimal numbers. */
constexpr std::array FrameRates = {
    FrameRateRow{59.94, {60000, 1001}},
    FrameRateRow{29.97, {30000, 1001}},
    FrameRateRow{23.98, {24000, 1001}},
    FrameRateRow{23.976, {24000, 1001}},
};

AVRational rational(double frameRate)
{
    for (const FrameRateRow &row : FrameRates) {
        if (fuzzyEqual(row.requested, frameRate))
            return row.frameRate;
    }
    return av_d2q(frameRate, std::numeric_limits<int>::max());
}

QString errorText(int code)
{
    std::array<char, 64> text{};
    av_strerror(code, text.data(), text.size());
    return QString::fromUtf8(text.data());
}

/** AV1 is coded in blocks of this size, and the encoder takes no smaller pictures. */
constexpr int SmallestAv1 = 64;
/** Of smaller pictures the encoder makes nothing, without a word. */
constexpr int SmallestH264 = 16;

/** What a container puts at its end takes less than this, and less than that again for every frame. */
constexpr qint64 EndBytes = 64 * 1024;
constexpr qint64 EndBytesPerFrame = 48;

/**
 * An encoder for AV1 codes what it holds before it lets go, which may take seconds: on a thread of its own,
 * which only the end of the program waits for. On the GUI thread.
 */
void endElsewhere(AvPointer<AVCodecContext> context)
{
    static std::vector<std::future<void>> ends;
    std::erase_if(ends, [](const std::future<void> &end) {
        return end.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    try {
        ends.push_back(
            std::async(std::launch::async, [held = std::move(context)]() mutable { held.reset(); }));
    } catch (const std::system_error &problem) {
        qDebug() << "an encoder ends here:" << problem.what();
    }
}
} // namespace

VideoEncoder::VideoEncoder(const QString &filePath, int width, int height, uint metaSize, Util::Format format,
                           Util::Codec codec, double frameRate, int quality, QObject *parent)
    : QObject(parent), m_filePath(filePath), m_width(width), m_height(height), m_metaSize(metaSize),
      m_format(format), m_quality(quality), m_codecId(codecRow(codec).codecId),
      m_pixFmt(codecRow(codec).pixFmt), m_frameRate(rational(frameRate)),
      m_timeBase(format == Util::FormatMp4 ? AVRational{1, m_frameRate.num} : av_inv_q(m_frameRate))
{
}

VideoEncoder::~VideoEncoder() = default;

VideoLayout VideoEncoder::layout() const
{
    return {.width = m_width,
            .height = m_height,
            .codedWidth = m_codecContext->width,
            .codedHeight = m_codecContext->height,
            .pixFmt = m_pixFmt,
            .bottomUp = isBottomUp()};
}

/** Players of old, which take raw films to be stored so, show them the right way up. */
bool VideoEncoder::isBottomUp() const
{
    return m_format == Util::FormatAvi && m_pixFmt == AV_PIX_FMT_BGR24;
}

bool VideoEncoder::open()
{
    m_options.clear();
    m_frameCount = 0;
    m_packetCount = 0;
    m_cutShort = false;
    av_log_set_level(AV_LOG_ERROR);
    qputenv("SVT_LOG", "1");

    AVFormatContext *context = nullptr;
    avformat_alloc_output_context2(&context, nullptr, m_format == Util::FormatMp4 ? "mp4" : "avi", nullptr);
    m_formatContext.reset(context);
    if (!context) {
        qDebug() << "avformat_alloc_output_context2 failed!";
        return false;
    }
    m_outputFormat = context->oformat;
    fillOptions();
    fillMetadata();
    bool opened = openStream();
    if (!opened)
        qDebug() << "openStream failed!";
    else if (opened = openCodec(); !opened)
        qDebug() << "openCodec failed!";
    if (!opened || !openFile()) {
        release();
        return false;
    }
    setIsOpen(true);
    return true;
}

/** Encoders and containers take what they know of these, and leave the rest. */
void VideoEncoder::fillOptions()
{
    m_options.set("", "");
    if (m_format == Util::FormatAvi)
        m_options.set("video_size", QByteArray::number(m_width) + 'x' + QByteArray::number(m_height));
    if (isBottomUp())
        m_options.set("flipped_raw_rgb", "1");
    if (m_codecId == AV_CODEC_ID_AV1) {
        m_options.set("crf", QByteArray::number(m_quality));
        m_options.set("preset", "5");
        m_options.set("color_primaries", m_height < 1081 && m_width <= 1920 ? "bt709" : "bt2020");
    }
    if (m_codecId == AV_CODEC_ID_H264) {
        m_options.set("rc_mode", "quality");
        m_options.set("qmin", QByteArray::number(m_quality));
        m_options.set("qmax", QByteArray::number(std::clamp(m_quality + 5, 1, 51)));
        m_options.set("complexity", "2");
        m_options.set("profile", "high");
        m_options.set("coder", "cabac");
        m_options.set("allow_skip_frames", "false");
        m_options.set("loopfilter", "1");
    }
}

void VideoEncoder::fillMetadata()
{
    AvDictionary metadata;
    metadata.set("creation_time",
                 QDateTime::currentDateTimeUtc().toString(u"yyyy-MM-dd'T'HH:mm:ss.zzz'Z'").toUtf8());
    metadata.set("title", QFileInfo(m_filePath).completeBaseName().toUtf8());
    m_formatContext->metadata = metadata.release();
}

bool VideoEncoder::openStream()
{
    if (m_codecId == AV_CODEC_ID_AV1)
        m_codec = avcodec_find_encoder_by_name("libsvtav1");
    else if (m_codecId == AV_CODEC_ID_H264)
        m_codec = avcodec_find_encoder_by_name("libopenh264");
    else
        m_codec = avcodec_find_encoder(m_codecId);
    const auto made = [](const void *what, const char *how) {
        if (!what)
            qDebug() << how << "failed!";
        return what != nullptr;
    };
    if (!made(m_codec, "avcodec_find_encoder"))
        return false;
    m_packet.reset(av_packet_alloc());
    if (!made(m_packet.get(), "av_packet_alloc"))
        return false;
    m_stream = avformat_new_stream(m_formatContext.get(), nullptr);
    if (!made(m_stream, "avformat_new_stream"))
        return false;
    m_stream->id = int(m_formatContext->nb_streams) - 1;
    m_codecContext.reset(avcodec_alloc_context3(m_codec));
    if (!made(m_codecContext.get(), "avcodec_alloc_context3"))
        return false;

    const int smallest = m_codecId == AV_CODEC_ID_AV1 ? SmallestAv1 : 0;
    m_codecContext->codec_id = m_codecId;
    m_codecContext->width = std::max(m_width, smallest);
    m_codecContext->height = std::max(m_height, smallest);
    m_codecContext->framerate = m_frameRate;
    m_codecContext->time_base = m_timeBase;
    m_codecContext->pix_fmt = m_pixFmt;
    m_stream->r_frame_rate = m_frameRate;
    m_stream->avg_frame_rate = m_frameRate;
    m_stream->time_base = m_timeBase;
    if (m_outputFormat->flags & AVFMT_GLOBALHEADER)
        m_codecContext->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return true;
}

/** The encoders refuse what else they cannot take; these they would take and make something else of. */
bool VideoEncoder::takesSize() const
{
    // A source that tells no size has nothing to show, also in a format that would pad it.
    if (m_width < 1 || m_height < 1)
        return false;
    // Of an odd size the last column or row would be missing: colour has half the resolution.
    return m_codecId != AV_CODEC_ID_H264 ||
           (std::min(m_width, m_height) >= SmallestH264 && m_width % 2 == 0 && m_height % 2 == 0);
}

bool VideoEncoder::openCodec()
{
    if (!takesSize()) {
        qDebug().noquote() << "avcodec_open2 failed:" << errorText(AVERROR(EINVAL));
        return false;
    }
    AvDictionary options;
    m_options.copyTo(options);
    if (const int code = openInBackground(m_codecContext.get(), m_codec, options.pointer()); code < 0) {
        qDebug().noquote() << "avcodec_open2 failed:" << errorText(code);
        return false;
    }
    m_picture = newPicture();
    if (!m_picture)
        return false;
    if (avcodec_parameters_from_context(m_stream->codecpar, m_codecContext.get()) < 0) {
        qDebug() << "avcodec_parameters_from_context failed!";
        return false;
    }
    return true;
}

bool VideoEncoder::openFile()
{
    if (const int code = m_output.open(m_filePath); code < 0) {
        qDebug().noquote() << "avio_open failed!:" << errorText(code);
        return false;
    }
    m_formatContext->pb = m_output.context();
    if (!m_output.reserve(EndBytes) ||
        avformat_write_header(m_formatContext.get(), m_options.pointer()) < 0) {
        qDebug() << "avformat_write_header failed!";
        m_output.remove();
        return false;
    }
    return true;
}

std::unique_ptr<VideoPicture> VideoEncoder::newPicture() const
{
    auto picture = std::make_unique<VideoPicture>(layout());
    return picture->allocate() ? std::move(picture) : nullptr;
}

int VideoEncoder::write(const QList<ushort> &image)
{
    if (!m_isOpen) {
        qDebug() << "Not open!";
        return -1;
    }
    if (!m_picture->fill(image)) {
        qDebug() << "getVideoFrame failed!";
        return -1;
    }
    return write(*m_picture);
}

int VideoEncoder::write(const VideoPicture &picture)
{
    if (!m_isOpen) {
        qDebug() << "Not open!";
        return -1;
    }
    AVFrame *frame = picture.frame();
    frame->pts = m_format == Util::FormatMp4 ? qint64(m_frameCount) * m_frameRate.den : m_frameCount;
    ++m_frameCount;
    return encode(frame);
}

/** Gives the encoder a frame, or the end with null, and writes what it has ready. 1 at its own end. */
int VideoEncoder::encode(const AVFrame *frame)
{
    if (avcodec_send_frame(m_codecContext.get(), frame) < 0)
        return -1;
    for (;;) {
        const int received = avcodec_receive_packet(m_codecContext.get(), m_packet.get());
        if (received == AVERROR(EAGAIN))
            return 0;
        if (received == AVERROR_EOF)
            return 1;
        if (received < 0 || writePacket() < 0)
            return -1;
    }
}

/**
 * A frame that leaves no room for the end of the file is not written, and none behind it, which it would be
 * missing from.
 */
int VideoEncoder::writePacket()
{
    av_packet_rescale_ts(m_packet.get(), m_codecContext->time_base, m_stream->time_base);
    m_packet->stream_index = m_stream->index;
    m_cutShort = m_cutShort ||
                 !m_output.reserve(m_packet->size + EndBytes + EndBytesPerFrame * m_frameCount) ||
                 av_interleaved_write_frame(m_formatContext.get(), m_packet.get()) < 0;
    if (m_cutShort) {
        av_packet_unref(m_packet.get());
        return -1;
    }
    ++m_packetCount;
    return 0;
}

bool VideoEncoder::close()
{
    if (!m_isOpen) {
        qDebug() << "Not open!";
        return true;
    }
    setIsOpen(false);
    // Each frame is a packet; an encoder that swallows some tells of no failure.
    const bool flushed = encode(nullptr) >= 0 && m_packetCount == m_frameCount;
    const bool ended = av_write_trailer(m_formatContext.get()) >= 0;
    const bool closed = m_output.close();
    release();
    return flushed && ended && closed;
}

void VideoEncoder::discard()
{
    if (!m_isOpen)
        return;
    setIsOpen(false);
    m_output.remove();
    endElsewhere(std::move(m_codecContext));
    release();
}

void VideoEncoder::setIsOpen(bool isOpen)
{
    m_isOpen = isOpen;
    emit isOpenChanged();
}

void VideoEncoder::release()
{
    m_codecContext.reset();
    m_picture.reset();
    m_packet.reset();
    if (m_formatContext)
        m_formatContext->pb = nullptr;
    m_formatContext.reset();
    m_stream = nullptr;
    m_outputFormat = nullptr;
}
