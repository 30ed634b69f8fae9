#include "take/raw_frame.h"

RawFrame::RawFrame(QObject *parent) : QObject(parent) {}

void RawFrame::init(const QByteArray &data, quint16 width, quint16 height, quint32 imgSize, quint32 metaSize,
                    quint64 yearOffset)
{
    m_data = data;
    m_width = width;
    m_height = height;
    m_imgSize = imgSize;
    m_metaSize = metaSize;
    m_yearOffset = yearOffset;
    emit initFinished();
}
