#include "image/histogram.h"

Histogram::Histogram(QObject *parent) : QObject(parent) {}

void Histogram::setImage(const QList<quint16> &image, ushort width, ushort height)
{
    m_image = image;
    m_width = width;
    m_height = height;
    emit imageChanged();
    emit widthChanged();
    emit heightChanged();
}
