#pragma once

#include <QImage>
#include <QObject>
#include <QTimer>
#include <QtQmlIntegration>

/**
 * The picture of one source and how it is looked at: zoom and pan, which stay while the user visits other
 * tabs. It knows nothing of the screen; the control that shows it reports the limits of panning. GUI thread.
 */
class ImgFrame : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
    Q_PROPERTY(bool zoomFit READ zoomFit WRITE setZoomFit NOTIFY zoomFitChanged)
    Q_PROPERTY(double zoomScale READ zoomScale WRITE setZoomScale NOTIFY zoomScaleChanged)
    Q_PROPERTY(double panX READ panX WRITE setPanX NOTIFY panXChanged)
    Q_PROPERTY(double panY READ panY WRITE setPanY NOTIFY panYChanged)
    Q_PROPERTY(double maxPanX READ maxPanX NOTIFY maxPanXChanged)
    Q_PROPERTY(double maxPanY READ maxPanY NOTIFY maxPanYChanged)
    Q_PROPERTY(bool panZoomActive READ panZoomActive NOTIFY panZoomActiveChanged)

public:
    explicit ImgFrame(QObject *parent = nullptr);

    const QImage &image() const { return m_image; }
    void setImage(const QImage &image);

    /** Whether the scale follows the size of the item that shows the frame. */
    bool zoomFit() const { return m_zoomFit; }
    void setZoomFit(bool zoomFit);

    /** Screen pixels per image pixel. */
    double zoomScale() const { return m_zoomScale; }
    /** Limited to 0.75..8 unless unclamped; dataChanged only with update. */
    void setZoomScale(double zoomScale, bool update = true, bool unclamped = false);

    /** Left and top edge of the visible part, as a fraction of the image, 0 to maxPanX and maxPanY. */
    double panX() const { return m_panX; }
    double panY() const { return m_panY; }
    void setPanX(double panX);
    void setPanY(double panY);

    /** 1 minus the visible fraction of the image. */
    double maxPanX() const { return m_maxPanX; }
    double maxPanY() const { return m_maxPanY; }
    void setMaxPan(double maxPanX, double maxPanY);

    /** True while zooming or panning, and for a second after. */
    bool panZoomActive() const { return m_panZoomActive; }

    /** One step of 0.25 up or down; a scale between the steps lands on one. */
    Q_INVOKABLE void zoomIn();
    Q_INVOKABLE void zoomOut();

signals:
    /** Whatever shows the frame must be brought up to date. */
    void dataChanged();
    void imageChanged();
    void zoomFitChanged();
    void zoomScaleChanged();
    void panXChanged();
    void panYChanged();
    void maxPanXChanged();
    void maxPanYChanged();
    void panZoomActiveChanged();

private:
    void zoomBy(double change);
    void startPanZoom();
    void endPanZoom();

    QImage m_image;
    bool m_zoomFit = false;
    double m_zoomScale = 1.0;
    double m_panX = 0.0;
    double m_panY = 0.0;
    double m_maxPanX = 0.0;
    double m_maxPanY = 0.0;
    bool m_panZoomActive = false;
    QTimer m_panTimer;
};
