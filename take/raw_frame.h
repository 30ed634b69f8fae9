#pragma once

#include <QByteArray>
#include <QObject>

/**
 * One frame as received, undecoded. Made for one exchange, parented to the object that asked for it. The
 * bytes are shared, never changed, so that they may be handed to other threads by value.
 */
class RawFrame : public QObject
{
    Q_OBJECT

public:
    explicit RawFrame(QObject *parent = nullptr);

    /**
     * Stores a record and emits initFinished before it returns. data is metaSize bytes of metadata, then
     * imgSize bytes of pixels, one byte a pixel; yearOffset in seconds since 1970. The sizes are those of
     * the headers and may promise more than data holds.
     */
    void init(const QByteArray &data, quint16 width, quint16 height, quint32 imgSize, quint32 metaSize,
              quint64 yearOffset);

    const QByteArray &data() const { return m_data; }
    quint16 width() const { return m_width; }
    quint16 height() const { return m_height; }
    quint32 imgSize() const { return m_imgSize; }
    quint32 metaSize() const { return m_metaSize; }
    quint64 yearOffset() const { return m_yearOffset; }

signals:
    void initFinished();
    void initError();

private:
    QByteArray m_data;
    quint16 m_width = 0;
    quint16 m_height = 0;
    quint32 m_imgSize = 0;
    quint32 m_metaSize = 0;
    quint64 m_yearOffset = 0;
};
