#pragma once

#include <QtTypes>

#include <array>
#include <cstddef>

/**
 * A received frame on its way to the screen in one pass: every row is read once and leaves as raw samples, as
 * the adjusted image and as the 8-bit picture while it is still in the cache. Rows spread over OpenCV's
 * workers. The results are those of the separate steps of ImgAdjUtil to the bit.
 */
namespace FrameKernel
{
using CodeTable = std::array<quint16, 256>;

/** What the rows of a frame spread over. */
enum class Cores { All, One };

/**
 * Where a frame comes from and where it goes; the buffers hold width x height samples or three times that. In
 * colour, raw may be null and so may image or picture; a picture without an image comes of the tables of 8
 * bits.
 */
struct Buffers {
    const uchar *codes;
    int width;
    int height;
    quint16 *raw;
    /** Blue, green, red. */
    quint16 *image;
    /** 8 bits a channel, rows without padding; in the order of the image or, without one, red, green, blue.
     */
    uchar *picture;
    Cores cores = Cores::All;
};

struct MonoTables {
    const CodeTable *raw;
    /** The adjustment table of the only channel, 65536 entries. */
    const quint16 *lut;
};

struct ColorTables {
    const CodeTable *raw;
    /** Widened and white-balanced sample of a code, by the parity of row and column. */
    std::array<std::array<const CodeTable *, 2>, 2> balanced;
    const quint16 *lutR;
    const quint16 *lutG;
    const quint16 *lutB;
    /** The same at 8 bits, where a picture is wanted without an image. */
    const uchar *bytesR = nullptr;
    const uchar *bytesG = nullptr;
    const uchar *bytesB = nullptr;
    /** The tables of 8 bits have for every sample what to8Bits() makes of it. */
    bool untouched = false;
    /** The mosaic starts with green, blue instead of red, green. */
    bool startsWithGreen;
};

void developMono(const MonoTables &tables, const Buffers &buffers);
/** width and height are at least 3: smaller frames have no pixel with all its neighbours. */
void developColor(const ColorTables &tables, const Buffers &buffers);

/** Largest difference of two samples at the same place; 0 without samples. */
quint16 largestDifference(const quint16 *first, const quint16 *second, std::size_t count);
} // namespace FrameKernel
