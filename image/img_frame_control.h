#pragma once

#include "image/img_frame.h"

#include <QPointer>
#include <QQuickItem>
#include <QtQmlIntegration>

/** Draws an ImgFrame and turns mouse, wheel and keys into its zoom and pan. */
class ImgFrameControl : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ImgFrame *imgFrame READ imgFrame WRITE setImgFrame NOTIFY imgFrameChanged)
    Q_PROPERTY(QRectF paintedRect READ paintedRect NOTIFY paintedRectChanged)
    Q_PROPERTY(int mouseX READ mouseX NOTIFY mouseXYChanged)
    Q_PROPERTY(int mouseY READ mouseY NOTIFY mouseXYChanged)
    Q_PROPERTY(bool containsMouse READ containsMouse NOTIFY containsMouseChanged)

public:
    explicit ImgFrameControl(QQuickItem *parent = nullptr);

    ImgFrame *imgFrame() const { return m_imgFrame; }
    void setImgFrame(ImgFrame *imgFrame);
    /** Where in the item the image lands. */
    QRectF paintedRect() const { return m_paintedRect; }
    /** The image pixel under the pointer, (0, 0) when there is none. */
    int mouseX() const { return m_mousePixel.x(); }
    int mouseY() const { return m_mousePixel.y(); }
    /** Whether the pointer is over the image. */
    bool containsMouse() const { return m_containsMouse; }

signals:
    void imgFrameChanged();
    void paintedRectChanged();
    void mouseXYChanged();
    void containsMouseChanged();
    void rightClicked();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *) override;
    void hoverEnterEvent(QHoverEvent *event) override;
    void hoverMoveEvent(QHoverEvent *event) override;
    void hoverLeaveEvent(QHoverEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void updateInternal();

private:
    /** Where the image lies at some scale, in item pixels, and which part of it shows. */
    struct Geometry {
        QSizeF scaledSize;
        QRectF painted;
        QRectF source;
    };

    bool hasImage() const;
    double fittingScale() const;
    Geometry geometry() const;
    void updateImplicitSize();
    QPoint pixelAt(const QPointF &position) const;
    void setMousePixel(const QPoint &pixel);
    void setContainsMouse(bool containsMouse);
    void leaveImage();
    void updateHover(const QPointF &position);
    void zoomAtPointer(int delta, const QPointF &position);
    void zoomAtCenter(bool in);

    QPointer<ImgFrame> m_imgFrame;
    QRectF m_paintedRect;
    QPoint m_mousePixel;
    bool m_containsMouse = false;
    bool m_dragging = false;
    QPointF m_lastPosition;
    QSizeF m_scaledSize;
    QRectF m_sourceRect;
};
