#include "image/histogram_control.h"

#include "app/vesk_app.h"
#include "image/img_adj_util.h"

#include <QQuickWindow>
#include <QSGImageNode>

namespace
{
constexpr int Bins = 256;
}

HistogramControl::HistogramControl(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void HistogramControl::setHistogram(Histogram *histogram)
{
    if (m_histogram == histogram)
        return;
    if (m_histogram)
        disconnect(m_histogram, nullptr, this, nullptr);
    m_histogram = histogram;
    if (m_histogram)
        connect(m_histogram, &Histogram::imageChanged, this, &HistogramControl::recompute);
    recompute();
    emit histogramChanged();
}

void HistogramControl::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    // A control that is made for a source at rest gets its size after its histogram, and no frame to come.
    if (newGeometry.size() != oldGeometry.size())
        recompute();
}

void HistogramControl::recompute()
{
    if (!m_histogram || m_histogram->image().isEmpty() || width() < 1 || height() < 1)
        return;
    // setImage tells of the image before the width; all three are stored by then.
    m_picture = VeskApp::instance()->imgAdjUtil()->renderHistogram(
        m_histogram->image(), m_histogram->width(), m_histogram->height(), int(width()), int(height()), Bins);
    update();
}

QSGNode *HistogramControl::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    auto *node = static_cast<QSGImageNode *>(oldNode);
    if (m_picture.isNull()) {
        setImplicitSize(0, 0);
        if (node)
            node->setRect(QRectF());
        return node;
    }
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
    }
    node->setTexture(window()->createTextureFromImage(m_picture));
    node->setRect(boundingRect());
    node->setSourceRect(m_picture.rect());
    return node;
}
