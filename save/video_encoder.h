#pragma once

#include "app/util.h"
#include "save/av_pointers.h"
#include "save/video_output.h"
#include "save/video_picture.h"

#include <QObject>

/**
 * Makes one film file of frames: AV1 or H.264 in MP4, raw frames in AVI. It is opened on the GUI thread,
 * written on a writer's thread, and closed on either, by one of them at a time.
 */
class VideoEncoder : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)

public:
    /**
     * frameRate in frames per second; quality is a quantiser, lower is better: 1 to 63 for AV1, 1 to 51 for
     * H.264.
     */
    VideoEncoder(const QString &filePath, int width, int height, uint metaSize, Util::Format format,
                 Util::Codec codec, double frameRate, int quality, QObject *parent);
    /** A file that is still open stays as it is by then, without its end. */
    ~VideoEncoder() override;

    bool isOpen() const { return m_isOpen; }
    /** Makes the file. False, with a log line and no file, when there can be none. */
    bool open();
    /**
     * Appends a frame of height x width x 3 samples in blue, green, red order. Below 0 on failure, which may
     * come some frames later: what the encoder makes of a frame it may give away with another one.
     */
    int write(const QList<ushort> &image);
    /** Finishes the file. False when not all of it is on the disk. */
    bool close();
    /** Deletes the file that is open, without waiting for what the encoder still holds. On the GUI thread. */
    void discard();
    /** No frame has come through to the file. */
    bool isEmpty() const { return m_packetCount == 0; }

    /** Whereto a frame can be converted ahead of its turn, on any one thread; null when there is no memory.
     */
    std::unique_ptr<VideoPicture> newPicture() const;
    /** Appends a frame that has been converted. */
    int write(const VideoPicture &picture);

signals:
    void isOpenChanged();

private:
    VideoLayout layout() const;
    bool isBottomUp() const;
    void fillOptions();
    void fillMetadata();
    bool openStream();
    bool takesSize() const;
    bool openCodec();
    bool openFile();
    int encode(const AVFrame *frame);
    int writePacket();
    void setIsOpen(bool isOpen);
    void release();

    QString m_filePath;
    bool m_isOpen = false;
    int m_width;
    int m_height;
    /** Of the source's frames; films have no place for it. */
    [[maybe_unused]] uint m_metaSize;
    Util::Format m_format;
    int m_quality;
    AVCodecID m_codecId;
    AVPixelFormat m_pixFmt;
    AVRational m_frameRate;
    AVRational m_timeBase;
    const AVOutputFormat *m_outputFormat = nullptr;
    VideoOutput m_output;
    AvPointer<AVFormatContext> m_formatContext;
    /** The format context's. */
    AVStream *m_stream = nullptr;
    const AVCodec *m_codec = nullptr;
    AvDictionary m_options;
    AvPointer<AVCodecContext> m_codecContext;
    /** For frames that come unconverted. */
    std::unique_ptr<VideoPicture> m_picture;
    AvPointer<AVPacket> m_packet;
    /** Frames given so far. */
    int m_frameCount = 0;
    /** Of those, how many the encoder has given to the container. */
    int m_packetCount = 0;
    /** The file has taken its last frame. */
    bool m_cutShort = false;
};
