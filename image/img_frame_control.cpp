#include "image/img_frame_control.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <cmath>

namespace
{
/** Fraction of the image that one notch of the wheel moves. */
constexpr double WheelPan = 0.1;
} // namespace

ImgFrameControl::ImgFrameControl(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    setFlag(ItemAcceptsInputMethod);
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
}

void ImgFrameControl::setImgFrame(ImgFrame *imgFrame)
{
    if (m_imgFrame == imgFrame)
        return;
    if (m_imgFrame)
        disconnect(m_imgFrame, nullptr, this, nullptr);
    m_imgFrame = imgFrame;
    if (m_imgFrame) {
        connect(m_imgFrame, &ImgFrame::dataChanged, this, &ImgFrameControl::updateInternal);
        connect(m_imgFrame, &QObject::destroyed, this, &ImgFrameControl::updateInternal);
    }
    emit imgFrameChanged();
    updateInternal();
}

void ImgFrameControl::componentComplete()
{
    QQuickItem::componentComplete();
    updateInternal();
}

void ImgFrameControl::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        updateInternal();
}

bool ImgFrameControl::hasImage() const
{
    return m_imgFrame && !m_imgFrame->image().isNull();
}

double ImgFrameControl::fittingScale() const
{
    const QSizeF image = m_imgFrame->image().size();
    const double availableWidth = widthValid() ? width() : image.width();
    const double availableHeight = heightValid() ? height() : image.height();
    return std::min(availableHeight / image.height(), availableWidth / image.width());
}

ImgFrameControl::Geometry ImgFrameControl::geometry() const
{
    const QSizeF image = m_imgFrame->image().size();
    const double scale = m_imgFrame->zoomScale();
    const QSizeF available(widthValid() ? width() : image.width(), heightValid() ? height() : image.height());
    const QSizeF full = image * scale;
    const QSizeF shown = full.boundedTo(available);
    const QSizeF hidden = (full - shown) / scale;
    return {full,
            QRectF(std::ceil((width() - shown.width()) * 0.5), std::ceil((height() - shown.height()) * 0.5),
                   shown.width(), shown.height()),
            QRectF(std::min(std::ceil(image.width() * m_imgFrame->panX()), std::ceil(hidden.width())),
                   std::min(std::ceil(image.height() * m_imgFrame->panY()), std::ceil(hidden.height())),
                   shown.width() / scale, shown.height() / scale)};
}

void ImgFrameControl::updateInternal()
{
    update();
    if (!hasImage()) {
        setImplicitSize(0, 0);
        return;
    }
    if (m_imgFrame->zoomFit()) {
        // An item without an area, as it is while a layout settles, has no scale that fits.
        const double scale = fittingScale();
        if (scale > 0.0)
            m_imgFrame->setZoomScale(scale, false, true);
    }
    const Geometry now = geometry();
    m_scaledSize = now.scaledSize;
    m_sourceRect = now.source;
    if (m_paintedRect != now.painted) {
        m_paintedRect = now.painted;
        emit paintedRectChanged();
    }
    m_imgFrame->setMaxPan(1.0 - now.painted.width() / now.scaledSize.width(),
                          1.0 - now.painted.height() / now.scaledSize.height());
    updateImplicitSize();
}

void ImgFrameControl::updateImplicitSize()
{
    const QSizeF image = m_imgFrame->image().size();
    const bool fullHeight = !widthValid() || heightValid();
    const bool fullWidth = !heightValid() || widthValid();
    setImplicitSize(fullWidth ? image.width() : m_paintedRect.width(),
                    fullHeight ? image.height() : m_paintedRect.height());
}

QSGNode *ImgFrameControl::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    auto *node = static_cast<QSGImageNode *>(oldNode);
    const Geometry now = hasImage() ? geometry() : Geometry();
    if (now.painted.isEmpty()) {
        delete node;
        return nullptr;
    }
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
    }
    node->setTexture(window()->createTextureFromImage(m_imgFrame->image()));
    node->setRect(now.painted);
    node->setSourceRect(now.source);
    return node;
}

QPoint ImgFrameControl::pixelAt(const QPointF &position) const
{
    const double scale = m_imgFrame->zoomScale();
    const QPointF pixel = m_sourceRect.topLeft() + (position - m_paintedRect.topLeft()) / scale;
    return {int(std::floor(pixel.x())), int(std::floor(pixel.y()))};
}

void ImgFrameControl::setMousePixel(const QPoint &pixel)
{
    if (m_mousePixel == pixel)
        return;
    m_mousePixel = pixel;
    emit mouseXYChanged();
}

void ImgFrameControl::setContainsMouse(bool containsMouse)
{
    if (m_containsMouse == containsMouse)
        return;
    m_containsMouse = containsMouse;
    emit containsMouseChanged();
}

void ImgFrameControl::leaveImage()
{
    setContainsMouse(false);
    unsetCursor();
    setMousePixel(QPoint());
}

void ImgFrameControl::updateHover(const QPointF &position)
{
    if (!hasImage()) {
        leaveImage();
        return;
    }
    const QPoint pixel = pixelAt(position);
    if (!m_imgFrame->image().rect().contains(pixel)) {
        leaveImage();
        return;
    }
    setContainsMouse(true);
    setCursor(Qt::CrossCursor);
    setMousePixel(pixel);
}

void ImgFrameControl::hoverEnterEvent(QHoverEvent *event)
{
    updateHover(event->position());
}

void ImgFrameControl::hoverMoveEvent(QHoverEvent *event)
{
    updateHover(event->position());
}

void ImgFrameControl::hoverLeaveEvent(QHoverEvent *)
{
    leaveImage();
}

void ImgFrameControl::mousePressEvent(QMouseEvent *event)
{
    if (!m_paintedRect.contains(event->position())) {
        event->setAccepted(event->button() == Qt::RightButton);
        return;
    }
    if (event->button() == Qt::LeftButton) {
        m_dragging = true;
        m_lastPosition = event->position();
    }
    event->accept();
}

void ImgFrameControl::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging || !hasImage())
        return;
    const QPointF moved = event->position() - m_lastPosition;
    m_imgFrame->setPanX(m_imgFrame->panX() - moved.x() / m_scaledSize.width());
    m_imgFrame->setPanY(m_imgFrame->panY() - moved.y() / m_scaledSize.height());
    m_lastPosition = event->position();
    setCursor(Qt::ClosedHandCursor);
}

void ImgFrameControl::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        emit rightClicked();
        return;
    }
    m_dragging = false;
    if (m_paintedRect.contains(event->position()))
        setCursor(Qt::CrossCursor);
    else
        unsetCursor();
}

void ImgFrameControl::mouseUngrabEvent()
{
    m_dragging = false;
}

void ImgFrameControl::wheelEvent(QWheelEvent *event)
{
    if (!hasImage()) {
        event->ignore();
        return;
    }
    const int delta = event->angleDelta().y();
    const int direction = (delta > 0) - (delta < 0);
    if (event->modifiers() & Qt::ControlModifier)
        zoomAtPointer(delta, event->position());
    else if (direction != 0 && (event->modifiers() & Qt::ShiftModifier))
        m_imgFrame->setPanX(m_imgFrame->panX() - direction * WheelPan);
    else if (direction != 0)
        m_imgFrame->setPanY(m_imgFrame->panY() - direction * WheelPan);
}

void ImgFrameControl::zoomAtPointer(int delta, const QPointF &position)
{
    const QPoint before = pixelAt(position);
    if (delta > 0)
        m_imgFrame->zoomIn();
    else if (delta < 0)
        m_imgFrame->zoomOut();
    const QPointF moved = pixelAt(position) - before;
    const QSizeF image = m_imgFrame->image().size();
    m_imgFrame->setPanX(m_imgFrame->panX() - moved.x() / image.width());
    m_imgFrame->setPanY(m_imgFrame->panY() - moved.y() / image.height());
}

void ImgFrameControl::keyPressEvent(QKeyEvent *event)
{
    const int key = event->key();
    const bool control = event->modifiers() & Qt::ControlModifier;
    const bool in =
        (control && (key == Qt::Key_Plus || key == Qt::Key_Equal)) || event->matches(QKeySequence::ZoomIn);
    const bool out = (control && (key == Qt::Key_Minus || key == Qt::Key_Underscore)) ||
                     event->matches(QKeySequence::ZoomOut);
    if (!(in || out) || !m_imgFrame) {
        event->ignore();
        return;
    }
    zoomAtCenter(in);
}

void ImgFrameControl::zoomAtCenter(bool in)
{
    const double centerX = (1.0 - m_imgFrame->maxPanX()) * 0.5 + m_imgFrame->panX();
    const double centerY = (1.0 - m_imgFrame->maxPanY()) * 0.5 + m_imgFrame->panY();
    if (in)
        m_imgFrame->zoomIn();
    else
        m_imgFrame->zoomOut();
    m_imgFrame->setPanX(centerX - (1.0 - m_imgFrame->maxPanX()) * 0.5);
    m_imgFrame->setPanY(centerY - (1.0 - m_imgFrame->maxPanY()) * 0.5);
}
