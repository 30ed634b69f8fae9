#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <QByteArray>

#include <memory>
#include <utility>

/** Frees what comes from libav. Files are closed before: that may fail, and this tells nobody. */
struct AvFree {
    void operator()(AVFormatContext *context) const { avformat_free_context(context); }
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(SwsContext *context) const { sws_freeContext(context); }
};

template <class Type> using AvPointer = std::unique_ptr<Type, AvFree>;

/** Keys and values; libav puts another dictionary in the place of the pointer as it changes. */
class AvDictionary
{
public:
    AvDictionary() = default;
    ~AvDictionary() { av_dict_free(&m_dictionary); }
    Q_DISABLE_COPY_MOVE(AvDictionary)

    void set(const char *key, const QByteArray &value)
    {
        av_dict_set(&m_dictionary, key, value.constData(), 0);
    }
    void copyTo(AvDictionary &other) const { av_dict_copy(&other.m_dictionary, m_dictionary, 0); }
    void clear() { av_dict_free(&m_dictionary); }
    /** For calls that change it. */
    AVDictionary **pointer() { return &m_dictionary; }
    /** The receiver owns it. */
    AVDictionary *release() { return std::exchange(m_dictionary, nullptr); }

private:
    AVDictionary *m_dictionary = nullptr;
};
