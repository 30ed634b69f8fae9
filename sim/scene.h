#pragma once

#include <QtGlobal>

#include <functional>
#include <optional>
#include <vector>

namespace q4sim
{

/// What is in front of the sensor.
enum class Look {
    Moving, ///< all that is told at pixel()
    Still,  ///< gradient, lines and bars alone, and the number so faint that it spans an eighth of the scale
    Plain   ///< one code in every pixel, and no number
};

/// One pixel that differs from the scene by `add` codes, limited to 0..255, in the frames first to last.
struct PixelChange {
    qint64 first = 0;
    qint64 last = 0;
    int x = 0;
    int y = 0;
    int add = 0;

    bool operator==(const PixelChange &) const = default;
};

/// All that a pixel depends on beside the frame number and its place.
struct SceneParams {
    int width = 640;
    int height = 480;
    int cfa = 1;      ///< 0 mono, 1 RGGB, 2 GBRG
    quint32 seed = 1; ///< of the noise
    int gainQ8 = 256; ///< brightness in 1/256; follows the exposure time
    int noise = 5;    ///< amplitude on the 9-bit scale
    Look look = Look::Moving;
    int code = 64; ///< of every pixel of a plain picture
    std::vector<PixelChange> changes = {};

    bool operator==(const SceneParams &) const = default;
};

/// 8-bit code that the camera sends for a 9-bit sample (0..511): slope 1 up to code 127, then one code for
/// two steps up to 191, then one for four.
quint8 compand(int linear9);

/// One byte of a frame as the camera sends it: a wheel that turns, a ball that bounces and drops that fall
/// over a gradient with colour bars, and the frame's number as digits and as a strip of blocks. Any frame
/// number, negative ones too. This is the slow way; SceneRenderer gives the same bytes.
quint8 pixel(const SceneParams &params, qint64 frame, int x, int y);

// The strip: blocks of 8x8 pixels from (8, 8) on: white, black, the low 32 bits of the frame number with
// the most significant first (white is 1), a block that makes the count of white ones among the last 33
// even, black. Drawn when the picture is at least 304 wide and 48 high, and not plain. A number of more than
// 32 bits can be read from the digits alone.
constexpr int stripX = 8;
constexpr int stripY = 8;
constexpr int stripBlock = 8;
constexpr int stripBlocks = 36;

/// Reads the strip of a picture that is neither rotated nor scaled. `brightness` gives the brightness of
/// the pixel at x and y on any scale. None when there is no strip or its parity is wrong.
std::optional<qint32> readStrip(const std::function<double(int x, int y)> &brightness);

namespace scene
{
struct Discs;
}

/// Renders whole frames of one scene; keeps what does not move. Safe from several threads.
class SceneRenderer
{
public:
    explicit SceneRenderer(const SceneParams &params);

    const SceneParams &params() const { return m_params; }

    /// Writes width times height bytes.
    void render(qint64 frame, quint8 *out) const;

private:
    void drawWheel(qint64 frame, int y, qint16 *line) const;
    void drawDiscs(const scene::Discs &discs, int y, qint16 *line) const;
    void drawPanel(qint64 frame, int y, qint16 *line) const;

    SceneParams m_params;
    std::vector<qint16> m_background; ///< 9-bit samples of the mosaic
    std::vector<qint16> m_wheelAngle; ///< of the wheel's square, -1 outside of the wheel
    std::vector<quint8> m_codes;      ///< compand() of -noise .. 511 + noise, limited to 0..511
};

} // namespace q4sim
