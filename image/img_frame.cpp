#include "image/img_frame.h"

#include "app/arithmetic.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using namespace std::chrono_literals;

namespace
{
constexpr double MinZoom = 0.75;
constexpr double MaxZoom = 8.0;
constexpr double ZoomStep = 0.25;

/** Limits to 0..max; a value that is no number becomes 0. */
double limitedPan(double value, double max)
{
    return value > 0.0 ? std::min(value, max) : 0.0;
}
} // namespace

ImgFrame::ImgFrame(QObject *parent) : QObject(parent)
{
    m_panTimer.setSingleShot(true);
    m_panTimer.setInterval(1000ms);
    connect(&m_panTimer, &QTimer::timeout, this, &ImgFrame::endPanZoom);
}

void ImgFrame::setImage(const QImage &image)
{
    m_image = image;
    emit imageChanged();
    emit dataChanged();
}

void ImgFrame::setZoomFit(bool zoomFit)
{
    if (m_zoomFit == zoomFit)
        return;
    m_zoomFit = zoomFit;
    emit zoomFitChanged();
    emit dataChanged();
}

void ImgFrame::setZoomScale(double zoomScale, bool update, bool unclamped)
{
    const double scale = unclamped ? zoomScale : std::clamp(zoomScale, MinZoom, MaxZoom);
    if (std::isnan(scale) || fuzzyEqual(scale, m_zoomScale))
        return;
    m_zoomScale = scale;
    emit zoomScaleChanged();
    if (update)
        emit dataChanged();
}

void ImgFrame::setPanX(double panX)
{
    const double limited = limitedPan(panX, m_maxPanX);
    if (!fuzzyEqual(limited, m_panX)) {
        m_panX = limited;
        emit panXChanged();
        emit dataChanged();
    }
    startPanZoom();
}

void ImgFrame::setPanY(double panY)
{
    const double limited = limitedPan(panY, m_maxPanY);
    if (!fuzzyEqual(limited, m_panY)) {
        m_panY = limited;
        emit panYChanged();
        emit dataChanged();
    }
    startPanZoom();
}

void ImgFrame::setMaxPan(double maxPanX, double maxPanY)
{
    const bool xChanged = !fuzzyEqual(maxPanX, m_maxPanX);
    const bool yChanged = !fuzzyEqual(maxPanY, m_maxPanY);
    m_maxPanX = maxPanX;
    m_maxPanY = maxPanY;
    if (xChanged)
        emit maxPanXChanged();
    if (yChanged)
        emit maxPanYChanged();
    // What is drawn is the same; but zooming goes on from here.
    const double panX = limitedPan(m_panX, m_maxPanX);
    const double panY = limitedPan(m_panY, m_maxPanY);
    if (std::exchange(m_panX, panX) != panX)
        emit panXChanged();
    if (std::exchange(m_panY, panY) != panY)
        emit panYChanged();
}

void ImgFrame::zoomIn()
{
    zoomBy(ZoomStep);
}

void ImgFrame::zoomOut()
{
    zoomBy(-ZoomStep);
}

void ImgFrame::zoomBy(double change)
{
    const double scale = std::round((m_zoomScale + change) / ZoomStep) * ZoomStep;
    setZoomFit(false);
    setZoomScale(scale);
    startPanZoom();
}

void ImgFrame::startPanZoom()
{
    if (!m_panZoomActive) {
        m_panZoomActive = true;
        emit panZoomActiveChanged();
    }
    m_panTimer.start();
}

void ImgFrame::endPanZoom()
{
    m_panZoomActive = false;
    emit panZoomActiveChanged();
}
