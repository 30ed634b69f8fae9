#include "image/frame_kernel.h"

#include "image/row_steps.h"
#include "image/sample_depth.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace
{
using FrameKernel::Buffers;
using FrameKernel::CodeTable;
using FrameKernel::ColorTables;
using FrameKernel::Cores;
using FrameKernel::MonoTables;

/** Rows of one task: few enough to share the work out evenly, enough to make the rows around it cheap. */
constexpr int RowsPerTask = 24;

/** Calls work(first row, end row) for all rows of a frame. */
template <class Work> void forRows(const Buffers &buffers, const Work &work)
{
    const int height = buffers.height;
    if (buffers.cores == Cores::One) {
        work(0, height);
        return;
    }
    const int tasks = (height + RowsPerTask - 1) / RowsPerTask;
    cv::parallel_for_(cv::Range(0, tasks), [&](const cv::Range &range) {
        work(range.start * RowsPerTask, std::min(height, range.end * RowsPerTask));
    });
}

void reduceRow(const quint16 *samples, int count, uchar *bytes)
{
    for (int i = 0; i < count; ++i)
        bytes[i] = to8Bits(samples[i]);
}

/** What one code becomes in a monochrome frame: a pixel of three equal samples, ready to be stored at once.
 */
struct MonoPixel {
    std::array<quint16, 4> samples;
    std::array<uchar, 4> bytes;
    quint16 raw;
};
using MonoPixels = std::array<MonoPixel, 256>;

MonoPixels monoPixels(const MonoTables &tables)
{
    MonoPixels pixels;
    for (std::size_t code = 0; code < pixels.size(); ++code) {
        MonoPixel &pixel = pixels[code];
        pixel.raw = (*tables.raw)[code];
        pixel.samples.fill(tables.lut[pixel.raw]);
        pixel.bytes.fill(to8Bits(pixel.samples[0]));
    }
    return pixels;
}

/** Stores four samples for every pixel: the fourth is overwritten by the next pixel, but for the last one. */
void developMonoPixels(const MonoPixels &pixels, const uchar *codes, int count, quint16 *raw, quint16 *image,
                       uchar *picture)
{
    for (int i = 0; i + 1 < count; ++i) {
        const MonoPixel &pixel = pixels[codes[i]];
        raw[i] = pixel.raw;
        std::memcpy(image + 3 * i, pixel.samples.data(), sizeof pixel.samples);
        std::memcpy(picture + 3 * i, pixel.bytes.data(), sizeof pixel.bytes);
    }
    const int last = count - 1;
    const MonoPixel &pixel = pixels[codes[last]];
    raw[last] = pixel.raw;
    std::copy_n(pixel.samples.begin(), 3, image + 3 * last);
    std::copy_n(pixel.bytes.begin(), 3, picture + 3 * last);
}

static_assert(std::endian::native == std::endian::little);

/** Two samples with one store. */
void putPair(uchar first, uchar second, uchar *pixels)
{
    const auto pair = quint16(first | second << 8);
    std::memcpy(pixels, &pair, sizeof pair);
}

void putPair(quint16 first, quint16 second, quint16 *pixels)
{
    const quint32 pair = first | quint32(second) << 16;
    std::memcpy(pixels, &pair, sizeof pair);
}

/** Three rows, each through its table, become one of pixels. */
template <class Sample>
void lookUpRow(const quint16 *__restrict first, const quint16 *__restrict second,
               const quint16 *__restrict third, const Sample *__restrict firstTable,
               const Sample *__restrict secondTable, const Sample *__restrict thirdTable, std::size_t count,
               Sample *__restrict pixels)
{
    std::size_t x = 0;
    for (; x + 1 < count; x += 2) {
        putPair(firstTable[first[x]], secondTable[second[x]], pixels + 3 * x);
        putPair(thirdTable[third[x]], firstTable[first[x + 1]], pixels + 3 * x + 2);
        putPair(secondTable[second[x + 1]], thirdTable[third[x + 1]], pixels + 3 * x + 4);
    }
    if (x < count) {
        pixels[3 * x] = firstTable[first[x]];
        pixels[3 * x + 1] = secondTable[second[x]];
        pixels[3 * x + 2] = thirdTable[third[x]];
    }
}

/** Bilinear demosaicing and look-up of a range of rows. */
class ColorRows
{
public:
    ColorRows(const ColorTables &tables, const Buffers &buffers)
        : m_tables(tables), m_buffers(buffers), m_width(std::size_t(buffers.width)),
          m_room(m_width + RowSteps::Spare), m_rows(3 * m_room), m_red(m_room), m_green(m_room),
          m_blue(m_room)
    {
    }

    void develop(int first, int end)
    {
        // The outermost rows repeat their inner neighbours, so the centre row stays between them.
        const int lastCentre = m_buffers.height - 2;
        int loaded = -1;
        for (int y = first; y < end; ++y) {
            const int centre = std::clamp(y, 1, lastCentre);
            for (int row = std::max(loaded + 1, centre - 1); row <= centre + 1; ++row)
                loadRow(row);
            loaded = centre + 1;
            if (m_buffers.raw)
                widenRow(y);
            demosaicRow(centre);
            finishRow(y);
        }
    }

private:
    quint16 *row(int y) { return m_rows.data() + std::size_t(y % 3) * m_room; }

    void loadRow(int y)
    {
        const auto &tables = m_tables.balanced[std::size_t(y & 1)];
        m_steps.load(m_buffers.codes + std::size_t(y) * m_width, *tables[0], *tables[1], m_width, row(y));
    }

    void widenRow(int y)
    {
        const uchar *codes = m_buffers.codes + std::size_t(y) * m_width;
        quint16 *raw = m_buffers.raw + std::size_t(y) * m_width;
        const CodeTable &table = *m_tables.raw;
        for (std::size_t x = 0; x < m_width; ++x)
            raw[x] = table[codes[x]];
    }

    /** Fills the three colour rows. */
    void demosaicRow(int y)
    {
        const bool rowStartsWithGreen = m_tables.startsWithGreen == ((y & 1) == 0);
        // Both mosaics put green and blue in one row, red and green in the other.
        const bool ownIsRed = !rowStartsWithGreen;
        const RowSteps::ColorRow colors{.green = m_green.data(),
                                        .own = ownIsRed ? m_red.data() : m_blue.data(),
                                        .other = ownIsRed ? m_blue.data() : m_red.data()};
        const std::size_t end = m_width - 1;
        m_steps.demosaic({row(y - 1), row(y), row(y + 1)}, end, rowStartsWithGreen, colors);
        for (quint16 *plane : {colors.green, colors.own, colors.other}) {
            plane[0] = plane[1];
            plane[end] = plane[end - 1];
        }
    }

    void finishRow(int y)
    {
        const std::size_t start = 3 * std::size_t(y) * m_width;
        if (!m_buffers.image) {
            uchar *picture = m_buffers.picture + start;
            if (m_tables.untouched && m_steps.reduce)
                m_steps.reduce(m_red.data(), m_green.data(), m_blue.data(), m_width, picture);
            else
                lookUpRow(m_red.data(), m_green.data(), m_blue.data(), m_tables.bytesR, m_tables.bytesG,
                          m_tables.bytesB, m_width, picture);
            return;
        }
        quint16 *image = m_buffers.image + start;
        lookUpRow(m_blue.data(), m_green.data(), m_red.data(), m_tables.lutB, m_tables.lutG, m_tables.lutR,
                  m_width, image);
        if (m_buffers.picture)
            reduceRow(image, int(3 * m_width), m_buffers.picture + start);
    }

    const ColorTables &m_tables;
    const Buffers &m_buffers;
    const RowSteps::Steps &m_steps = RowSteps::fastest();
    std::size_t m_width;
    std::size_t m_room;
    /** The last three white-balanced rows, row y at place y modulo 3. */
    std::vector<quint16> m_rows;
    std::vector<quint16> m_red;
    std::vector<quint16> m_green;
    std::vector<quint16> m_blue;
};
} // namespace

void FrameKernel::developMono(const MonoTables &tables, const Buffers &buffers)
{
    const MonoPixels pixels = monoPixels(tables);
    forRows(buffers, [&](int first, int end) {
        const std::size_t start = std::size_t(first) * std::size_t(buffers.width);
        developMonoPixels(pixels, buffers.codes + start, (end - first) * buffers.width, buffers.raw + start,
                          buffers.image + 3 * start, buffers.picture + 3 * start);
    });
}

void FrameKernel::developColor(const ColorTables &tables, const Buffers &buffers)
{
    forRows(buffers, [&](int first, int end) { ColorRows(tables, buffers).develop(first, end); });
}

quint16 FrameKernel::largestDifference(const quint16 *first, const quint16 *second, std::size_t count)
{
    quint16 largest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const quint16 above = first[i] > second[i] ? quint16(first[i] - second[i]) : quint16(0);
        const quint16 below = second[i] > first[i] ? quint16(second[i] - first[i]) : quint16(0);
        largest = std::max(largest, quint16(above | below));
    }
    return largest;
}
