#pragma once

#include <QByteArray>
#include <QList>

#include <array>
#include <cmath>

/** Images of 16 bits, blue, green, red, as an encoder takes them. */
namespace TestImages
{
inline QList<ushort> bars(int width, int height)
{
    // White, yellow, cyan, green, magenta, red, blue, black.
    constexpr std::array<std::array<ushort, 3>, 8> colors = {{{65535, 65535, 65535},
                                                              {0, 65535, 65535},
                                                              {65535, 65535, 0},
                                                              {0, 65535, 0},
                                                              {65535, 0, 65535},
                                                              {0, 0, 65535},
                                                              {65535, 0, 0},
                                                              {0, 0, 0}}};
    QList<ushort> image;
    for (int i = 0; i < width * height; ++i) {
        for (const ushort sample : colors[std::size_t(i % width * 8 / width)])
            image.append(sample);
    }
    return image;
}

inline QList<ushort> ramp(int width, int height)
{
    QList<ushort> image;
    for (int i = 0; i < width * height; ++i) {
        const auto sample = ushort(i % width * 65535 / std::max(width - 1, 1));
        image.append({sample, sample, sample});
    }
    return image;
}

/** A soft bright disc that crosses a coloured slope, three pixels a frame. */
inline QList<ushort> moving(int width, int height, int frame)
{
    QList<ushort> image;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double dx = x - 3 * frame - 10;
            const double dy = y - height / 2;
            const double disc = 25000.0 * std::exp(-(dx * dx + dy * dy) / 200.0);
            image.append({ushort(40000 - 20000 * y / height + disc), ushort(10000 + 20000 * x / width + disc),
                          ushort(20000 + disc)});
        }
    }
    return image;
}

/** Samples that differ from pixel to pixel, row to row and frame to frame, and use the whole scale. */
inline QList<ushort> noise(int width, int height, quint32 seed)
{
    QList<ushort> image(qsizetype(width) * height * 3);
    for (ushort &sample : image) {
        seed = seed * 1664525u + 1013904223u;
        sample = ushort(seed >> 16);
    }
    return image;
}

/** To nearest. */
inline uchar eightBits(double sample)
{
    return uchar(std::floor(sample / 257.0 + 0.5));
}

inline QByteArray bgr24(const QList<ushort> &image)
{
    QByteArray bytes;
    for (const ushort sample : image)
        bytes.append(char(eightBits(sample)));
    return bytes;
}

/** In decibels; 100 for the very same. */
inline double psnr(const QByteArray &first, const QByteArray &second)
{
    if (first.size() != second.size() || first.isEmpty())
        return 0.0;
    double sum = 0.0;
    for (qsizetype i = 0; i < first.size(); ++i)
        sum += std::pow(double(uchar(first[i])) - double(uchar(second[i])), 2);
    return sum == 0.0 ? 100.0 : 10.0 * std::log10(255.0 * 255.0 / (sum / double(first.size())));
}
} // namespace TestImages
