#pragma once

#include <QList>
#include <QRect>
#include <QVariant>

/**
 * Every parameter of how a source's frames look. Embedded in ImgAdjModel; workers take a copy when they
 * start, which shares the tables until one side writes. The fields without a suffix are those of the green
 * channel, or of the only channel of a monochrome source.
 */
struct ImgAdjData {
    QVariant offsetR = 0.0, offset = 0.0, offsetB = 0.0;
    QVariant gainR = 1.0, gain = 1.0, gainB = 1.0;
    QVariant gammaR = 1.0, gamma = 1.0, gammaB = 1.0;
    QVariant contrastR = 0.0, contrast = 0.0, contrastB = 0.0;
    /** An ImgAdjUtil::CfaType. */
    QVariant cfa = 0;
    QVariant wbR = 1.0, wbG = 1.0, wbB = 1.0;
    QVariant wbCalR = 1.0, wbCalG = 1.0, wbCalB = 1.0;
    /** Look-up tables of 65536 entries. */
    QList<quint16> lutR = QList<quint16>(65536), lutG = QList<quint16>(65536), lutB = QList<quint16>(65536);
    /** Degrees clockwise; flips after the rotation. */
    QVariant rotate = 0, flipH = 0, flipV = 0;
    /** ImgAdjModel::ExpAssist and ImgAdjModel::FocusPeak. */
    int expAssist = 0;
    int focusPeak = 0;
    /** Part of the image to keep, before rotation; the null rectangle keeps all. Nothing sets it yet. */
    QRect cropRect;
};
