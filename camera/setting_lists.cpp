#include "camera/setting_lists.h"

#include <QJsonArray>
#include <QMap>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

static constexpr std::array Fstops{1.0,  1.1,  1.2,  1.4,  1.6,  1.8,  2.0,  2.2,  2.5,  2.8,
                                   3.2,  3.5,  4.0,  4.5,  5.0,  5.6,  6.3,  7.1,  8.0,  9.0,
                                   10.0, 11.0, 13.0, 14.0, 16.0, 18.0, 20.0, 22.0, 25.0, 29.0,
                                   32.0, 36.0, 40.0, 45.0, 51.0, 57.0, 64.0, 72.0, 80.0, 90.0};
static_assert(Fstops.size() == 40);

static const QStringList &commonVideoFormats()
{
    static const QStringList formats{
        u"1280x720p23.98"_s, u"1280x720p24"_s,     u"1280x720p25"_s, u"1280x720p29.97"_s,  u"1280x720p30"_s,
        u"1280x720p50"_s,    u"1280x720p59.94"_s,  u"1280x720p60"_s, u"1920x1080p23.98"_s, u"1920x1080p24"_s,
        u"1920x1080p25"_s,   u"1920x1080p29.97"_s, u"1920x1080p30"_s};
    return formats;
}

/**
 * Entries by their number, so that candidates of equal value collapse into one. The first one of them stays:
 * it is the current setting, whose text is looked for afterwards.
 */
static QStringList ascending(const QStringList &candidates)
{
    QMap<double, QString> entries;
    for (const QString &text : candidates) {
        if (const double number = text.toDouble(); !entries.contains(number))
            entries.insert(number, text);
    }
    return entries.values();
}

static QStringList descending(const QStringList &candidates)
{
    QStringList entries = ascending(candidates);
    std::reverse(entries.begin(), entries.end());
    return entries;
}

namespace
{
/** The exposures that the camera accepts, in clocks. */
class ExposureGrid
{
public:
    explicit ExposureGrid(const ExposureTiming &timing)
        : m_freq(timing.clkFreq), m_mult(timing.clksMult), m_offset(timing.clksOffset)
    {
    }

    qint64 snapDown(qint64 clks) const { return snapped(clks - m_offset); }
    qint64 snapUp(qint64 clks) const { return snapped(clks - m_offset - 1 + m_mult); }
    /** The grid point at or above a time in whole us. */
    qint64 atMicroseconds(int us) const { return snapUp(us * m_freq / 1000000); }
    QString text(qint64 clks) const { return QString::number(double(clks) / double(m_freq) * 1e6, 'f', 3); }

private:
    qint64 snapped(qint64 fromOffset) const
    {
        return std::max<qint64>(fromOffset - fromOffset % m_mult + m_offset, 0);
    }

    qint64 m_freq;
    qint64 m_mult;
    qint64 m_offset;
};
} // namespace

SettingEntries exposureEntries(const ExposureTiming &timing)
{
    const ExposureGrid grid(timing);
    const qint64 top = grid.snapDown(timing.clksMax);
    const qint64 fine = grid.atMicroseconds(1);
    const qint64 low = grid.snapUp(timing.clksMin);

    const QString current = grid.text(timing.clks);
    // The exact lower limit is listed even when it is off the grid.
    QStringList candidates{current, grid.text(top), grid.text(timing.clksMin)};
    const auto addMicroseconds = [&](int first, int last, int step) {
        for (int us = first; us <= last && grid.atMicroseconds(us) <= top; us += step)
            candidates << grid.text(grid.atMicroseconds(us));
    };
    addMicroseconds(10, 100, 10);
    addMicroseconds(1, 9, 1);
    // A grid that runs downwards would have no end.
    for (qint64 clks = low; clks < fine && clks <= top && timing.clksMult > 0; clks += timing.clksMult)
        candidates << grid.text(clks);
    return {descending(candidates), current};
}

SettingEntries frameRateEntries(const FrameTiming &timing)
{
    const QString current = QString::number(timing.clkFreq / timing.clks);
    QStringList candidates{current, QString::number(timing.clkFreq / timing.clksMin)};
    const auto addPeriod = [&](uint clks) {
        if (clks >= timing.clksMin && clks <= timing.clksMax)
            candidates << QString::number(timing.clkFreq / clks);
    };
    if (timing.clkFreq % 1000 == 0) {
        // A rate of k * 1000 is exact where k and the period are a pair of divisors of this.
        const uint product = timing.clkFreq / 1000;
        for (uint divisor = 1; divisor <= product / divisor; ++divisor) {
            if (product % divisor != 0)
                continue;
            addPeriod(divisor);
            addPeriod(product / divisor);
        }
    }
    return {descending(candidates), current};
}

SettingEntries externalFrameRateEntries(double rate)
{
    const QString text = QString::number(rate, 'g', 6);
    return {{text}, text};
}

SettingEntries triggerOffsetEntries(int trigOffset, int partitionFrames)
{
    const QString current = QString::number(trigOffset);
    return {ascending({current, QString::number(2), QString::number(partitionFrames / 2),
                       QString::number(qint64(partitionFrames) - 1)}),
            current};
}

QStringList fstopEntries(double fstopMin, double fstopMax)
{
    QStringList entries;
    for (const double fstop : Fstops) {
        if (qFuzzyCompare(fstop, fstopMin) || qFuzzyCompare(fstop, fstopMax) ||
            (fstop > fstopMax && fstop < fstopMin))
            entries << QString::number(fstop, 'g', 6);
    }
    return entries;
}

QString fstopText(double fstop)
{
    return QString::asprintf("%g", fstop);
}

QStringList resolutionEntries(const QJsonValue &validRes)
{
    QStringList entries;
    const QJsonArray values = validRes.toArray();
    for (const QJsonValue &value : values) {
        if (value.isString())
            entries << value.toString();
    }
    return entries;
}

QStringList videoFormatEntries(const QJsonValue &validFormat)
{
    return validFormat.isArray() ? resolutionEntries(validFormat) : commonVideoFormats();
}
