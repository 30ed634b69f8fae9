#include "sim/scene.h"

#include "sim/scene_parts.h"

#include <algorithm>
#include <bit>

namespace q4sim
{

using namespace scene;

quint8 compand(int linear9)
{
    if (linear9 < 128)
        return static_cast<quint8>(std::max(linear9, 0));
    if (linear9 < 256)
        return static_cast<quint8>((linear9 + 127) / 2);
    return static_cast<quint8>((std::min(linear9, 511) + 511) / 4);
}

namespace
{

quint8 changed(quint8 code, const PixelChange &change)
{
    return static_cast<quint8>(std::clamp(code + change.add, 0, 255));
}

bool isIn(qint64 frame, const PixelChange &change)
{
    return frame >= change.first && frame <= change.last;
}

quint8 unchangedPixel(const SceneParams &params, qint64 frame, int x, int y)
{
    if (params.look == Look::Plain)
        return static_cast<quint8>(params.code);
    int linear = sample(params, background(params, x, y), x, y);
    const Wheel w = wheel(params);
    const int angle = wheelAngle(w, x - w.x, y - w.y);
    if (angle != -1 && params.look == Look::Moving)
        linear = sample(params, wheelColour(frame, angle), x, y);
    const Discs all = discs(params, frame);
    for (const Disc &disc : all.discs) {
        const int dx = x - disc.x;
        const int dy = y - disc.y;
        if (dx * dx + dy * dy <= disc.radius * disc.radius && params.look == Look::Moving)
            linear = sample(params, disc.colour, x, y);
    }
    if (const int lit = panel(params, frame, x, y); lit >= 0)
        linear = panelLevel(params, lit);
    const auto index = static_cast<quint32>(y * params.width + x);
    return compand(linear + noise(params, noiseSeed(params, frame), index));
}

} // namespace

quint8 pixel(const SceneParams &params, qint64 frame, int x, int y)
{
    quint8 code = unchangedPixel(params, frame, x, y);
    for (const PixelChange &change : params.changes) {
        if (isIn(frame, change) && change.x == x && change.y == y)
            code = changed(code, change);
    }
    return code;
}

std::optional<qint32> readStrip(const std::function<double(int, int)> &brightness)
{
    const auto block = [&brightness](int i) {
        const int x = stripX + i * stripBlock + stripBlock / 2;
        const int y = stripY + stripBlock / 2;
        return (brightness(x - 1, y - 1) + brightness(x, y - 1) + brightness(x - 1, y) + brightness(x, y)) /
               4;
    };
    const double white = block(0);
    const double black = block(1);
    // The two first blocks are the scale; without a clear difference there is no strip.
    if (white <= black * 2 || white <= 0)
        return std::nullopt;
    const auto bit = [&](int i) { return block(i) > (white + black) / 2; };
    quint32 number = 0;
    for (int i = 2; i < 34; ++i)
        number = number << 1 | (bit(i) ? 1U : 0U);
    const bool odd = std::popcount(number) & 1;
    if (bit(34) != odd || bit(35))
        return std::nullopt;
    return static_cast<qint32>(number);
}

SceneRenderer::SceneRenderer(const SceneParams &params) : m_params(params)
{
    const int w = params.width;
    m_background.resize(static_cast<size_t>(w) * static_cast<size_t>(params.height));
    for (int y = 0; y < params.height; ++y) {
        for (int x = 0; x < w; ++x)
            m_background[static_cast<size_t>(y * w + x)] =
                static_cast<qint16>(sample(params, background(params, x, y), x, y));
    }
    const Wheel wh = wheel(params);
    for (int dy = -wh.radius; dy <= wh.radius; ++dy) {
        for (int dx = -wh.radius; dx <= wh.radius; ++dx)
            m_wheelAngle.push_back(static_cast<qint16>(wheelAngle(wh, dx, dy)));
    }
    for (int v = -params.noise; v <= 511 + params.noise; ++v)
        m_codes.push_back(compand(v));
}

void SceneRenderer::drawWheel(qint64 frame, int y, qint16 *line) const
{
    const Wheel wh = wheel(m_params);
    const int dy = y - wh.y;
    if (dy < -wh.radius || dy > wh.radius)
        return;
    const int side = 2 * wh.radius + 1;
    const qint16 *angles = &m_wheelAngle[static_cast<size_t>((dy + wh.radius) * side)];
    for (int i = 0; i < side; ++i) {
        if (const int x = wh.x - wh.radius + i; angles[i] != -1 && x >= 0 && x < m_params.width)
            line[x] = static_cast<qint16>(sample(m_params, wheelColour(frame, angles[i]), x, y));
    }
}

void SceneRenderer::drawDiscs(const Discs &discs, int y, qint16 *line) const
{
    for (const Disc &disc : discs.discs) {
        const int dy = y - disc.y;
        const int last = std::min(disc.x + disc.radius, m_params.width - 1);
        for (int x = std::max(disc.x - disc.radius, 0); x <= last; ++x) {
            if ((x - disc.x) * (x - disc.x) + dy * dy <= disc.radius * disc.radius)
                line[x] = static_cast<qint16>(sample(m_params, disc.colour, x, y));
        }
    }
}

void SceneRenderer::drawPanel(qint64 frame, int y, qint16 *line) const
{
    if (y < panelY || y >= panelY + panelHeight)
        return;
    for (int x = panelX; x < std::min(panelX + panelWidth, m_params.width); ++x) {
        if (const int lit = panel(m_params, frame, x, y); lit >= 0)
            line[x] = static_cast<qint16>(panelLevel(m_params, lit));
    }
}

void SceneRenderer::render(qint64 frame, quint8 *out) const
{
    const int w = m_params.width;
    const Discs all = discs(m_params, frame);
    const quint32 seed = noiseSeed(m_params, frame);
    const quint8 *codes = m_codes.data() + m_params.noise;
    std::vector<qint16> line(static_cast<size_t>(w));
    quint8 *to = out;
    if (m_params.look == Look::Plain)
        std::fill_n(out, w * m_params.height, static_cast<quint8>(m_params.code));
    for (int y = 0; y < m_params.height && m_params.look != Look::Plain; ++y) {
        std::copy_n(&m_background[static_cast<size_t>(y * w)], w, line.begin());
        if (m_params.look == Look::Moving) {
            drawWheel(frame, y, line.data());
            drawDiscs(all, y, line.data());
        }
        drawPanel(frame, y, line.data());
        const auto first = static_cast<quint32>(y * w);
        for (int x = 0; x < w; ++x)
            *to++ =
                codes[line[static_cast<size_t>(x)] + noise(m_params, seed, first + static_cast<quint32>(x))];
    }
    for (const PixelChange &change : m_params.changes) {
        quint8 &code = out[change.y * w + change.x];
        if (isIn(frame, change))
            code = changed(code, change);
    }
}

} // namespace q4sim
