#include "image/row_steps.h"

#include "image/sample_depth.h"

#include <opencv2/core/utility.hpp>

#include <array>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace
{
using FrameKernel::CodeTable;
using RowSteps::ColorRow;
using RowSteps::MosaicRows;
using RowSteps::Steps;

void loadCommon(const uchar *codes, const CodeTable &even, const CodeTable &odd, std::size_t count,
                quint16 *samples)
{
    std::size_t x = 0;
    for (; x + 1 < count; x += 2) {
        samples[x] = even[codes[x]];
        samples[x + 1] = odd[codes[x + 1]];
    }
    if (x < count)
        samples[x] = even[codes[x]];
}

/** Means to nearest, halves up, in arithmetic that never leaves 16 bits: twice as many go into a vector. */
constexpr quint16 mean(quint16 a, quint16 b)
{
    return quint16(quint16(a | b) - quint16(quint16(a ^ b) >> 1));
}

constexpr quint16 mean(quint16 a, quint16 b, quint16 c, quint16 d)
{
    const auto quarters = quint16(quint16(a >> 2) + quint16(b >> 2) + quint16(c >> 2) + quint16(d >> 2));
    const auto rests = quint16((a & 3) + (b & 3) + (c & 3) + (d & 3) + 2);
    return quint16(quarters + quint16(rests >> 2));
}

/**
 * All four means are made for every pixel and the parity of the column chooses among them, which the compiler
 * turns into vector instructions; it has to know of each of the rows that it is no part of another.
 */
void demosaicColumns(const MosaicRows &rows, std::size_t end, bool rowStartsWithGreen,
                     quint16 *__restrict green, quint16 *__restrict own, quint16 *__restrict other)
{
    const quint16 *__restrict above = rows.above;
    const quint16 *__restrict centre = rows.centre;
    const quint16 *__restrict below = rows.below;
    const quint16 greenAtEven = rowStartsWithGreen ? 0xffff : 0;
    for (int x = 1; x < int(end); ++x) {
        const quint16 beside = mean(centre[x - 1], centre[x + 1]);
        const quint16 over = mean(above[x], below[x]);
        const quint16 cross = mean(centre[x - 1], centre[x + 1], above[x], below[x]);
        const quint16 corners = mean(above[x - 1], above[x + 1], below[x - 1], below[x + 1]);
        const auto atGreen = quint16(greenAtEven ^ (x & 1 ? 0xffff : 0));
        const auto choose = [atGreen](quint16 onGreen, quint16 onColor) {
            return quint16((onGreen & atGreen) | (onColor & quint16(~atGreen)));
        };
        green[x] = choose(centre[x], cross);
        own[x] = choose(beside, centre[x]);
        other[x] = choose(over, corners);
    }
}

void demosaicCommon(const MosaicRows &rows, std::size_t end, bool rowStartsWithGreen, const ColorRow &colors)
{
    demosaicColumns(rows, end, rowStartsWithGreen, colors.green, colors.own, colors.other);
}

constexpr Steps Common{.load = loadCommon, .demosaic = demosaicCommon, .reduce = nullptr};

#ifdef __x86_64__
[[gnu::target("avx2")]] inline __m256i loaded(const quint16 *samples)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(samples));
}

[[gnu::target("avx2")]] inline void store(__m256i vector, quint16 *samples)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(samples), vector);
}

// Vectors of 256 bits hold 16 samples or 32 bytes, in two halves that many instructions keep apart.

/** Two samples each, and their mean to nearest, halves up. */
struct Pairs {
    [[gnu::target("avx2")]] Pairs(__m256i first, __m256i second)
        : mean(_mm256_avg_epu16(first, second)), difference(_mm256_xor_si256(first, second))
    {
    }

    __m256i mean;
    /** The lowest bit tells whether the mean was rounded up. */
    __m256i difference;
};

/**
 * Mean of four to nearest, halves up. The mean of the means would be rounded up twice: where it is odd halves
 * that meet, and a mean was rounded up before, it is one too many.
 */
[[gnu::target("avx2")]] inline __m256i mean(const Pairs &first, const Pairs &second)
{
    const __m256i rounded = _mm256_or_si256(first.difference, second.difference);
    const __m256i again = _mm256_and_si256(rounded, _mm256_xor_si256(first.mean, second.mean));
    return _mm256_sub_epi16(_mm256_avg_epu16(first.mean, second.mean),
                            _mm256_and_si256(again, _mm256_set1_epi16(1)));
}

template <bool RowStartsWithGreen>
[[gnu::target("avx2")]] void demosaicRow(const MosaicRows &rows, std::size_t end, const ColorRow &colors)
{
    for (std::size_t x = 1; x < end; x += 16) {
        const __m256i centre = loaded(rows.centre + x);
        const Pairs beside(loaded(rows.centre + x - 1), loaded(rows.centre + x + 1));
        const Pairs over(loaded(rows.above + x), loaded(rows.below + x));
        const Pairs left(loaded(rows.above + x - 1), loaded(rows.below + x - 1));
        const Pairs right(loaded(rows.above + x + 1), loaded(rows.below + x + 1));
        // The first sample of a vector is that of an odd column.
        constexpr int green = RowStartsWithGreen ? 0xaa : 0x55;
        store(_mm256_blend_epi16(mean(beside, over), centre, green), colors.green + x);
        store(_mm256_blend_epi16(centre, beside.mean, green), colors.own + x);
        store(_mm256_blend_epi16(mean(left, right), over.mean, green), colors.other + x);
    }
}

[[gnu::target("avx2")]] void demosaicAvx2(const MosaicRows &rows, std::size_t end, bool rowStartsWithGreen,
                                          const ColorRow &colors)
{
    if (rowStartsWithGreen)
        demosaicRow<true>(rows, end, colors);
    else
        demosaicRow<false>(rows, end, colors);
}

/** to8Bits(), of 16 samples. */
[[gnu::target("avx2")]] inline __m256i to8BitsAvx2(__m256i samples)
{
    const __m256i less = _mm256_sub_epi16(samples, _mm256_srli_epi16(samples, 8));
    const __m256i up = _mm256_add_epi16(_mm256_set1_epi16(127), _mm256_srli_epi16(samples, 15));
    return _mm256_srli_epi16(_mm256_add_epi16(less, up), 8);
}

/** 32 samples at 8 bits, in order: to pack them leaves the quarters of the vector 0, 2, 1, 3. */
[[gnu::target("avx2")]] inline __m256i bytes(const quint16 *samples)
{
    const __m256i packed =
        _mm256_packus_epi16(to8BitsAvx2(loaded(samples)), to8BitsAvx2(loaded(samples + 16)));
    return _mm256_permute4x64_epi64(packed, 0xd8);
}

/** Where each byte comes from, in both halves of a vector; negative: it becomes 0. */
using Spread = std::array<signed char, 32>;

/** 16 pixels are three parts of 16 bytes, to which each channel gives the bytes of its own. */
constexpr std::array<std::array<Spread, 3>, 3> spreads()
{
    std::array<std::array<Spread, 3>, 3> result{};
    for (std::size_t part = 0; part < 3; ++part) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            for (std::size_t i = 0; i < 32; ++i) {
                const std::size_t at = part * 16 + i % 16;
                result[part][channel][i] = static_cast<signed char>(at % 3 == channel ? at / 3 : 255);
            }
        }
    }
    return result;
}

[[gnu::target("avx2")]] inline __m256i spread(__m256i channel, const Spread &places)
{
    return _mm256_shuffle_epi8(channel, _mm256_loadu_si256(reinterpret_cast<const __m256i *>(places.data())));
}

[[gnu::target("avx2")]] void reduceAvx2(const quint16 *first, const quint16 *second, const quint16 *third,
                                        std::size_t count, uchar *pixels)
{
    static constexpr auto Spreads = spreads();
    std::size_t x = 0;
    for (; x + 32 <= count; x += 32) {
        const __m256i firsts = bytes(first + x);
        const __m256i seconds = bytes(second + x);
        const __m256i thirds = bytes(third + x);
        for (std::size_t part = 0; part < 3; ++part) {
            const __m256i joined = _mm256_or_si256(
                _mm256_or_si256(spread(firsts, Spreads[part][0]), spread(seconds, Spreads[part][1])),
                spread(thirds, Spreads[part][2]));
            uchar *to = pixels + 3 * x + 16 * part;
            _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm256_castsi256_si128(joined));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(to + 48), _mm256_extracti128_si256(joined, 1));
        }
    }
    for (; x < count; ++x) {
        pixels[3 * x] = to8Bits(first[x]);
        pixels[3 * x + 1] = to8Bits(second[x]);
        pixels[3 * x + 2] = to8Bits(third[x]);
    }
}

constexpr Steps Avx2{.load = loadCommon, .demosaic = demosaicAvx2, .reduce = reduceAvx2};

/** A table of 256 samples in registers of 512 bits. */
class TableAvx512
{
public:
    [[gnu::target("avx512f,avx512bw")]] explicit TableAvx512(const CodeTable &table)
    {
        for (std::size_t i = 0; i < m_parts.size(); ++i)
            m_parts[i].samples = _mm512_loadu_si512(table.data() + 32 * i);
    }

    /** An instruction looks up among 64 samples; the two upper bits of a code choose among four of them. */
    [[gnu::target("avx512f,avx512bw")]] __m512i of(__m512i codes) const
    {
        const __mmask32 bit6 = _mm512_test_epi16_mask(codes, _mm512_set1_epi16(64));
        const __mmask32 bit7 = _mm512_test_epi16_mask(codes, _mm512_set1_epi16(128));
        const __m512i lower = _mm512_mask_mov_epi16(quarter(codes, 0), bit6, quarter(codes, 1));
        const __m512i upper = _mm512_mask_mov_epi16(quarter(codes, 2), bit6, quarter(codes, 3));
        return _mm512_mask_mov_epi16(lower, bit7, upper);
    }

private:
    [[gnu::target("avx512f,avx512bw")]] __m512i quarter(__m512i codes, std::size_t i) const
    {
        return _mm512_permutex2var_epi16(m_parts[2 * i].samples, codes, m_parts[2 * i + 1].samples);
    }

    /** A vector on its own would lose its alignment as the argument of a template. */
    struct Part {
        __m512i samples;
    };

    std::array<Part, 8> m_parts;
};

[[gnu::target("avx512f,avx512bw")]] void loadAvx512(const uchar *codes, const CodeTable &even,
                                                    const CodeTable &odd, std::size_t count, quint16 *samples)
{
    const TableAvx512 atEven(even);
    const TableAvx512 atOdd(odd);
    std::size_t x = 0;
    for (; x + 32 <= count; x += 32) {
        const __m512i row =
            _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(codes + x)));
        _mm512_storeu_si512(samples + x, _mm512_mask_mov_epi16(atEven.of(row), 0xaaaaaaaa, atOdd.of(row)));
    }
    loadCommon(codes + x, even, odd, count - x, samples + x);
}

constexpr Steps Avx512{.load = loadAvx512, .demosaic = demosaicAvx2, .reduce = reduceAvx2};
#endif
} // namespace

const Steps *RowSteps::with(Vectors vectors)
{
#ifdef __x86_64__
    if (vectors == Vectors::Avx2)
        return cv::checkHardwareSupport(CV_CPU_AVX2) ? &Avx2 : nullptr;
    // The set of that name has the instructions for 16-bit samples in it.
    if (vectors == Vectors::Avx512)
        return with(Vectors::Avx2) && cv::checkHardwareSupport(CV_CPU_AVX512_SKX) ? &Avx512 : nullptr;
#endif
    return vectors == Vectors::Common ? &Common : nullptr;
}

const Steps &RowSteps::fastest()
{
    for (const Vectors vectors : {Vectors::Avx512, Vectors::Avx2}) {
        if (const Steps *steps = with(vectors))
            return *steps;
    }
    return Common;
}
