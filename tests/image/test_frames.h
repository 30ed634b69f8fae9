#pragma once

#include "image/img_adj_data.h"
#include "image/img_adj_util.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <cmath>
#include <numeric>

/** Frames and adjustments that several tests and the benchmarks share. */
namespace TestFrames
{
/** Every code as likely as every other. */
inline QByteArray noise(int width, int height, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray codes(qsizetype(width) * height, Qt::Uninitialized);
    for (char &code : codes)
        code = char(random.bounded(256));
    return codes;
}

/** Soft shapes with sharp edges, black and saturated areas and a little noise, seen through a mosaic. */
inline QByteArray scene(int width, int height, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray codes(qsizetype(width) * height, Qt::Uninitialized);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double level = 90.0 + 60.0 * std::sin(x * 0.021) * std::cos(y * 0.017);
            level *= (y % 2 == 0) == (x % 2 == 0) ? 1.0 : 0.8;
            const bool inDisc = std::hypot(x - width * 0.4, y - height * 0.5) < height * 0.2;
            const bool inBars = x > width * 3 / 4 && (y / 6) % 2 == 0;
            if (inDisc || inBars)
                level += 110.0;
            if (y < height / 10)
                level = x < width / 2 ? 0.0 : 255.0;
            else
                level += random.bounded(7) - 3;
            codes[qsizetype(y) * width + x] = char(int(std::clamp(level, 0.0, 255.0)));
        }
    }
    return codes;
}

/** A record as a camera sends it. */
inline QByteArray record(const QByteArray &codes, qsizetype metaSize = 32)
{
    return QByteArray(metaSize, '\0') + codes;
}

/** The defaults, with the tables that change nothing. */
inline ImgAdjData identityAdjustment(int cfa)
{
    ImgAdjData adj;
    adj.cfa = cfa;
    for (QList<quint16> *lut : {&adj.lutR, &adj.lutG, &adj.lutB})
        std::iota(lut->begin(), lut->end(), quint16(0));
    return adj;
}

/** Three different curves and a white balance that saturates some sites. */
inline ImgAdjData strongAdjustment(int cfa)
{
    ImgAdjData adj = identityAdjustment(cfa);
    static const ImgAdjUtil util;
    util.updateLut(adj.lutR, -0.02, 1.3, 2.2, 0.1);
    util.updateLut(adj.lutG, 0.01, 1.1, 1.8, -0.1);
    util.updateLut(adj.lutB, 0.03, 0.9, 0.7, 0.2);
    adj.wbR = 1.7;
    adj.wbG = 1.013;
    adj.wbB = 2.3;
    adj.wbCalR = 0.97;
    adj.wbCalG = 1.0;
    adj.wbCalB = 1.09;
    return adj;
}
} // namespace TestFrames
