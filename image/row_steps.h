#pragma once

#include "image/frame_kernel.h"

#include <cstddef>

/** What a colour frame goes through row by row. Every set of steps gives the same result to the bit. */
namespace RowSteps
{
/** Room that a row of samples has behind its last one: demosaicing reads and writes a vector at a time. */
constexpr std::size_t Spare = 16;

/** Three rows of a white-balanced mosaic, one below the other; each with Spare. */
struct MosaicRows {
    const quint16 *above;
    const quint16 *centre;
    const quint16 *below;
};

/** The colours of a row of pixels; each with Spare. */
struct ColorRow {
    quint16 *green;
    /** That which shares the centre row with green. */
    quint16 *own;
    /** That of the rows above and below. */
    quint16 *other;
};

struct Steps {
    /** Each of count codes through the table of its column's parity. */
    void (*load)(const uchar *codes, const FrameKernel::CodeTable &even, const FrameKernel::CodeTable &odd,
                 std::size_t count, quint16 *samples);
    /** Bilinear, columns 1 to end - 1 of the centre row. What is left behind them means nothing. */
    void (*demosaic)(const MosaicRows &rows, std::size_t end, bool rowStartsWithGreen,
                     const ColorRow &colors);
    /** Three rows of count samples through to8Bits(), as one of pixels. Null: tables take less time. */
    void (*reduce)(const quint16 *first, const quint16 *second, const quint16 *third, std::size_t count,
                   uchar *pixels);
};

/** What the steps are made of. */
enum class Vectors {
    /** Those that every processor of this kind has. */
    Common,
    Avx2,
    Avx512
};

/** Null where this processor has no such vectors, or OpenCV has been told not to use them. */
const Steps *with(Vectors vectors);
/** With the widest vectors that may be used. */
const Steps &fastest();
} // namespace RowSteps
