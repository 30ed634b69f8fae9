#include "tests/e2e/shown_picture.h"

#include "sim/scene.h"

#include <array>
#include <cmath>

namespace
{
QSize turned(const Placement &placement)
{
    return placement.rotate == 0 ? placement.camera : placement.camera.transposed();
}

QRect paintedRect(const QRect &area, const Placement &placement)
{
    const QSizeF full = QSizeF(turned(placement)) * placement.scale;
    const double width = std::min<double>(full.width(), area.width());
    const double height = std::min<double>(full.height(), area.height());
    return {area.x() + static_cast<int>(std::ceil((area.width() - width) / 2)),
            area.y() + static_cast<int>(std::ceil((area.height() - height) / 2)), static_cast<int>(width),
            static_cast<int>(height)};
}
} // namespace

ShownPicture::ShownPicture(const QImage &window, const QRect &area, const Placement &placement)
    : m_window(window), m_placement(placement), m_painted(paintedRect(area, placement))
{
}

QPoint ShownPicture::place(int x, int y) const
{
    const QSize size = turned(m_placement);
    QPoint p(x, y);
    if (m_placement.rotate == 90)
        p = {m_placement.camera.height() - 1 - y, x};
    else if (m_placement.rotate == 270)
        p = {y, m_placement.camera.width() - 1 - x};
    if (m_placement.flipH)
        p.setX(size.width() - 1 - p.x());
    if (m_placement.flipV)
        p.setY(size.height() - 1 - p.y());
    const QPointF offset = QPointF(p - m_placement.source) + QPointF(0.5, 0.5);
    return m_painted.topLeft() + QPoint(static_cast<int>(std::floor(offset.x() * m_placement.scale)),
                                        static_cast<int>(std::floor(offset.y() * m_placement.scale)));
}

QRgb ShownPicture::colour(int x, int y) const
{
    const QPoint p = place(x, y);
    return m_painted.contains(p) ? m_window.pixel(p) : 0;
}

std::optional<int> ShownPicture::frameNumber() const
{
    return q4sim::readStrip([this](int x, int y) { return static_cast<double>(qGray(colour(x, y))); });
}

bool ShownPicture::barsInPlace() const
{
    // White, yellow, cyan, green, magenta, red, blue, black; each 80 wide, the
    // lowest eighth of the frame.
    constexpr std::array bars = {7, 6, 3, 2, 5, 4, 1, 0};
    for (int i = 0; i < 8; ++i) {
        for (const int x : {80 * i + 10, 80 * i + 70}) {
            if (!m_painted.contains(place(x, 450)) ||
                colourBits(colour(x, 450)) != bars.at(static_cast<size_t>(i)))
                return false;
        }
    }
    return true;
}

int colourBits(QRgb colour)
{
    return (qRed(colour) > 110 ? 4 : 0) | (qGreen(colour) > 110 ? 2 : 0) | (qBlue(colour) > 110 ? 1 : 0);
}

Bar greenBar(const QImage &window, int y, int from, int to)
{
    Bar widest;
    Bar here;
    for (int x = from; x < to; ++x) {
        if (colourBits(window.pixel(x, y)) != 2) {
            here = {};
            continue;
        }
        if (here.width++ == 0)
            here.left = x;
        if (here.width > widest.width)
            widest = here;
    }
    return widest;
}
