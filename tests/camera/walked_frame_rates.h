#pragma once

#include "camera/setting_lists.h"

#include <functional>
#include <map>

/** The menu of frame rates by the plain walk: every count of clocks of the range, one at a time. */
inline QStringList walkedFrameRates(const FrameTiming &timing)
{
    std::map<double, QString, std::greater<>> entries;
    const auto add = [&](uint rate) { entries.emplace(double(rate), QString::number(rate)); };
    add(timing.clkFreq / timing.clks);
    add(timing.clkFreq / timing.clksMin);
    // In 64 bits, so that the walk also ends at the greatest count.
    for (quint64 count = timing.clksMin; count <= timing.clksMax; ++count) {
        const uint clks = uint(count);
        if (timing.clkFreq % clks == 0 && (timing.clkFreq / clks) % 1000 == 0)
            add(timing.clkFreq / clks);
    }
    QStringList texts;
    for (const auto &[rate, text] : entries)
        texts << text;
    return texts;
}
