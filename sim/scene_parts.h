#pragma once

#include "sim/scene.h"

#include <array>

// What the scene is made of. Integer arithmetic, so that every machine draws the same bytes.
namespace q4sim::scene
{

/// Linear colour, each part 0..511.
struct Colour {
    int r;
    int g;
    int b;
};

struct Disc {
    int x;
    int y;
    int radius;
    Colour colour;
};

constexpr int discCount = 13;
struct Discs {
    std::array<Disc, discCount> discs;
};

struct Wheel {
    int x;
    int y;
    int radius;
};

constexpr int turn = 4096; ///< angle units in one turn

/// Sample of the site at x and y under a colour, gain applied, 0..511.
int sample(const SceneParams &params, const Colour &colour, int x, int y);

Colour background(const SceneParams &params, int x, int y);

Wheel wheel(const SceneParams &params);
/// Angle of a point from the wheel's centre, 0..turn - 1; -1 outside of the wheel, -2 on its hub.
int wheelAngle(const Wheel &wheel, int dx, int dy);
Colour wheelColour(qint64 frame, int angle);

/// The drops, then the ball; a later one hides an earlier one.
Discs discs(const SceneParams &params, qint64 frame);

/// 1 white, 0 black, -1 where the number's panel is not.
int panel(const SceneParams &params, qint64 frame, int x, int y);
constexpr int panelX = 4;
constexpr int panelY = 4;
constexpr int panelWidth = 296;
constexpr int panelHeight = 40;
/// Level of the number's panel on the 9-bit scale.
constexpr int panelLevel(const SceneParams &params, int lit)
{
    if (params.look == Look::Still)
        return lit ? 100 : 40;
    return lit ? 470 : 20;
}

/// Noise of a site, -params.noise .. params.noise.
inline int noise(const SceneParams &params, quint32 frameSeed, quint32 index)
{
    quint32 h = index * 0x9E3779B1U ^ frameSeed;
    h ^= h >> 15;
    h *= 0x85EBCA77U;
    h ^= h >> 13;
    return static_cast<int>(((h >> 16) * static_cast<quint32>(2 * params.noise + 1)) >> 16) - params.noise;
}
quint32 noiseSeed(const SceneParams &params, qint64 frame);

} // namespace q4sim::scene
