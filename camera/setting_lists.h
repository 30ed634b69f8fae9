#pragma once

#include <QJsonValue>
#include <QStringList>

/** The entries of one menu of settings in the order shown, and the text of the current setting. */
struct SettingEntries {
    QStringList texts;
    QString current;
};

/** What the camera tells about its exposure, in clocks of clkFreq Hz; it accepts offset + k * mult clocks. */
struct ExposureTiming {
    int clkFreq;
    int clks;
    int clksMin;
    int clksMax;
    int clksMult; // not 0
    int clksOffset;
};

/** The same of its frame period, in clocks of clkFreq Hz. */
struct FrameTiming {
    uint clkFreq;
    uint clks;    // not 0
    uint clksMin; // not 0
    uint clksMax;
};

/**
 * Exposure times in us with three decimals, longest first: the grid below 1 us, 1 to 9 us, tens up to 100 us,
 * the limits and the current one.
 */
SettingEntries exposureEntries(const ExposureTiming &timing);

/**
 * Frame rates in frames per second, fastest first: multiples of 1000 that the clock gives exactly, the
 * fastest one and the current one.
 */
SettingEntries frameRateEntries(const FrameTiming &timing);

/** The only rate while the frames are timed from outside. */
SettingEntries externalFrameRateEntries(double rate);

/** Frames after the trigger, fewest first, of a partition of that many frames. */
SettingEntries triggerOffsetEntries(int trigOffset, int partitionFrames);

/**
 * F-stops of a lens whose smallest opening is fstopMin (the greater number) and whose widest is fstopMax;
 * ascending. A lens that reports them the other way round gets only the end stops.
 */
QStringList fstopEntries(double fstopMin, double fstopMax);
QString fstopText(double fstop);

/** The texts of an array, in its order. */
QStringList resolutionEntries(const QJsonValue &validRes);

/** The texts of an array; for anything else the formats that every camera has. */
QStringList videoFormatEntries(const QJsonValue &validFormat);
