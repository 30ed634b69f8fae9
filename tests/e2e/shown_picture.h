#pragma once

#include <QImage>
#include <QRect>

#include <optional>

/// How a picture of the camera lies in the window, by the rules of the frame
/// view.
struct Placement {
    QSize camera{640, 480}; ///< of the camera's frame
    int rotate = 0;         ///< 0, 90, 270 degrees clockwise
    bool flipH = false;
    bool flipV = false;
    double scale = 1.0;
    QPoint source{}; ///< first pixel shown of the turned picture
};

/// The part of the window with the camera's picture, read back.
class ShownPicture
{
public:
    /// `area` is where the picture may be, in the window.
    ShownPicture(const QImage &window, const QRect &area, const Placement &placement);

    /// Where in the window a pixel of the camera's frame is.
    QPoint place(int x, int y) const;
    QRgb colour(int x, int y) const;

    /// The frame's number from the strip in the picture; none when it cannot be
    /// read there.
    std::optional<int> frameNumber() const;

    /// True when all eight colour bars that the camera draws at the foot of its
    /// frame are at their places.
    bool barsInPlace() const;

    /// The rectangle of the window with the picture.
    QRect painted() const { return m_painted; }

private:
    QImage m_window;
    Placement m_placement;
    QRect m_painted;
};

/// Red, green and blue of a colour as bits 4, 2 and 1: bright or not.
int colourBits(QRgb colour);

/// Left edge and width of the green colour bar along a line of the window;
/// width 0 when there is none. The blurred edge of two other bars can be green
/// too, but is not wide.
struct Bar {
    int left = 0;
    int width = 0;
};
Bar greenBar(const QImage &window, int y, int from, int to);
