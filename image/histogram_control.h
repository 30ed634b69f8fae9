#pragma once

#include "image/histogram.h"

#include <QImage>
#include <QPointer>
#include <QQuickItem>
#include <QtQmlIntegration>

/** Draws the level curves of a Histogram at the item's own size. */
class HistogramControl : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Histogram *histogram READ histogram WRITE setHistogram NOTIFY histogramChanged)

public:
    explicit HistogramControl(QQuickItem *parent = nullptr);

    Histogram *histogram() const { return m_histogram; }
    void setHistogram(Histogram *histogram);

signals:
    void histogramChanged();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *) override;

private:
    void recompute();

    QPointer<Histogram> m_histogram;
    QImage m_picture;
};
