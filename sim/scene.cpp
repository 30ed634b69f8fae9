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

quint8 pixel(const SceneParams &params, qint64 frame, int x, int y)
{
    int linear = sample(params, background(params, x, y), x, y);
    const Wheel w = wheel(params);
    const int angle = wheelAngle(w, x - w.x, y - w.y);
    if (angle != -1)
        linear = sample(params, wheelColour(frame, angle), x, y);
    const auto all = discs(params, frame);
    for (const Disc &disc : all) {
        const int dx = x - disc.x;
        const int dy = y - disc.y;
        if (dx * dx + dy * dy <= disc.radius * disc.radius)
            linear = sample(params, disc.colour, x, y);
    }
    if (const int lit = panel(params, frame, x, y); lit >= 0)
        linear = lit ? panelWhite : panelBlack;
    const auto index = static_cast<quint32>(y * params.width + x);
    return compand(linear + noise(params, noiseSeed(params, frame), index));
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

void SceneRenderer::render(qint64 frame, quint8 *out) const
{
    const int w = m_params.width;
    const auto all = discs(m_params, frame);
    const quint32 seed = noiseSeed(m_params, frame);
    const quint8 *codes = m_codes.data() + m_params.noise;
    std::vector<qint16> line(static_cast<size_t>(w));
    for (int y = 0; y < m_params.height; ++y) {
        std::copy_n(&m_background[static_cast<size_t>(y * w)], w, line.begin());
        drawWheel(frame, y, line.data());
        for (const Disc &disc : all) {
            const int dy = y - disc.y;
            for (int x = std::max(disc.x - disc.radius, 0); x <= std::min(disc.x + disc.radius, w - 1); ++x) {
                if ((x - disc.x) * (x - disc.x) + dy * dy <= disc.radius * disc.radius)
                    line[static_cast<size_t>(x)] = static_cast<qint16>(sample(m_params, disc.colour, x, y));
            }
        }
        if (y >= panelY && y < panelY + panelHeight) {
            for (int x = panelX; x < std::min(panelX + panelWidth, w); ++x) {
                if (const int lit = panel(m_params, frame, x, y); lit >= 0)
                    line[static_cast<size_t>(x)] = static_cast<qint16>(lit ? panelWhite : panelBlack);
            }
        }
        const auto first = static_cast<quint32>(y * w);
        for (int x = 0; x < w; ++x)
            *out++ =
                codes[line[static_cast<size_t>(x)] + noise(m_params, seed, first + static_cast<quint32>(x))];
    }
}

} // namespace q4sim
