#include "sim/scene_parts.h"

#include <QString>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace q4sim::scene
{

namespace
{

constexpr std::array<Colour, 8> bars = {{{420, 420, 420},
                                         {420, 420, 30},
                                         {30, 420, 420},
                                         {30, 420, 30},
                                         {420, 30, 420},
                                         {420, 30, 30},
                                         {30, 30, 420},
                                         {30, 30, 30}}};

constexpr std::array<Colour, 6> sectors = {
    {{430, 40, 40}, {430, 330, 30}, {60, 400, 60}, {30, 370, 400}, {60, 80, 440}, {390, 50, 390}}};

// Rows of the digits 0 to 9 and the minus sign, three bits each, the left pixel highest.
constexpr std::array<std::array<int, 5>, 11> font = {{{7, 5, 5, 5, 7},
                                                      {2, 6, 2, 2, 7},
                                                      {7, 1, 7, 4, 7},
                                                      {7, 1, 7, 1, 7},
                                                      {5, 5, 7, 1, 1},
                                                      {7, 4, 7, 1, 7},
                                                      {7, 4, 7, 5, 7},
                                                      {7, 1, 1, 1, 1},
                                                      {7, 5, 7, 5, 7},
                                                      {7, 5, 7, 1, 7},
                                                      {0, 0, 7, 0, 0}}};
constexpr int digitX = 8;
constexpr int digitY = 20;
constexpr int digitScale = 4;
constexpr int digitPitch = 16;

int floorMod(qint64 a, int b)
{
    const qint64 rest = a % b;
    return static_cast<int>(rest < 0 ? rest + b : rest);
}

// 0 red, 1 green, 2 blue. Both patterns have R G in one row and G B in the other.
int channel(int cfa, int x, int y)
{
    const bool redRow = (y % 2 == 0) == (cfa == 1);
    if (x % 2 == 0)
        return redRow ? 0 : 1;
    return redRow ? 1 : 2;
}

int stripBit(qint64 frame, int block)
{
    const auto bits = static_cast<quint32>(frame);
    if (block < 2)
        return block == 0 ? 1 : 0;
    if (block < 34)
        return static_cast<int>(bits >> (33 - block) & 1U);
    return block == 34 ? std::popcount(bits) & 1 : 0;
}

int digitBit(qint64 frame, int x, int y)
{
    const int column = x / digitPitch;
    const int dx = x % digitPitch / digitScale;
    const int dy = y / digitScale;
    if (dx > 2 || dy > 4)
        return 0;
    const QByteArray text = QByteArray::number(frame);
    if (column >= text.size())
        return 0;
    const char c = text[column];
    const auto glyph = static_cast<size_t>(c == '-' ? 10 : c - '0');
    return font[glyph][static_cast<size_t>(dy)] >> (2 - dx) & 1;
}

} // namespace

int sample(const SceneParams &params, const Colour &colour, int x, int y)
{
    int linear = 0;
    if (params.cfa == 0) {
        linear = (colour.r * 77 + colour.g * 150 + colour.b * 29) >> 8;
    } else {
        const int c = channel(params.cfa, x, y);
        linear = c == 0 ? colour.r : c == 1 ? colour.g : colour.b;
    }
    return std::clamp(linear * params.gainQ8 >> 8, 0, 511);
}

Colour background(const SceneParams &params, int x, int y)
{
    const int w = params.width;
    const int h = params.height;
    if (y >= h * 7 / 8)
        return bars[static_cast<size_t>(x * 8 / w)];
    if (x % 80 < 2 || y % 80 < 2) // as wide as the mosaic, so that the lines keep their colour
        return {230, 230, 230};
    return {40 + 140 * x / w, 50 + 110 * y / h, 190 - 130 * x / w};
}

Wheel wheel(const SceneParams &params)
{
    return {params.width * 11 / 16, params.height * 7 / 16,
            std::min(params.height * 9 / 32, params.width / 4)};
}

int wheelAngle(const Wheel &wheel, int dx, int dy)
{
    const int distance2 = dx * dx + dy * dy;
    if (distance2 > wheel.radius * wheel.radius)
        return -1;
    if (distance2 * 36 < wheel.radius * wheel.radius)
        return -2;
    const double angle = std::atan2(double(dy), double(dx)) / (2 * std::numbers::pi) * turn;
    return floorMod(std::lround(angle), turn);
}

Colour wheelColour(qint64 frame, int angle)
{
    if (angle == -2)
        return {25, 25, 25};
    // Seven units a frame: a turn every 585 frames.
    const int turned = floorMod(angle - 7 * frame, turn);
    const int sector = turned * 6 / turn;
    const bool spoke = turned - sector * turn / 6 < 40;
    return spoke ? Colour{480, 480, 480} : sectors[static_cast<size_t>(sector)];
}

Discs discs(const SceneParams &params, qint64 frame)
{
    Discs found = {};
    auto &all = found.discs;
    const int w = params.width;
    const int ground = params.height * 7 / 8;
    for (int i = 0; i + 1 < discCount; ++i) {
        const int x = w * (2 * i + 1) / (2 * (discCount - 1));
        const int fallen = floorMod(frame * (5 + i % 5) / 8 + i * 97, ground);
        all[static_cast<size_t>(i)] = {x, fallen, 3 + i % 3, {90, 260, 470}};
    }
    const int radius = std::max(params.height / 14, 4);
    const int across = std::max(w / 2 - 2 * radius, 1);
    const int wander = floorMod(frame / 2, 2 * across);
    const int x = radius + (wander < across ? wander : 2 * across - wander);
    // A bounce takes 640 frames; the height is a parabola of the time within it.
    const int t = floorMod(frame, 640);
    const int rise = (ground - 3 * radius) * t / 160 * (640 - t) / 640;
    all[discCount - 1] = {x, ground - radius - rise, radius, {470, 180, 40}};
    return found;
}

int panel(const SceneParams &params, qint64 frame, int x, int y)
{
    if (params.width < 304 || params.height < 48)
        return -1;
    const int px = x - panelX;
    const int py = y - panelY;
    if (px < 0 || py < 0 || px >= panelWidth || py >= panelHeight)
        return -1;
    const int sx = x - stripX;
    const int sy = y - stripY;
    if (sx >= 0 && sx < stripBlocks * stripBlock && sy >= 0 && sy < stripBlock)
        return stripBit(frame, sx / stripBlock);
    return x >= digitX && y >= digitY ? digitBit(frame, x - digitX, y - digitY) : 0;
}

quint32 noiseSeed(const SceneParams &params, qint64 frame)
{
    quint64 h = (static_cast<quint64>(frame) + params.seed * 0x9E3779B97F4A7C15ULL) * 0xD6E8FEB86659FD93ULL;
    h ^= h >> 32;
    h *= 0xD6E8FEB86659FD93ULL;
    return static_cast<quint32>(h >> 32);
}

} // namespace q4sim::scene
