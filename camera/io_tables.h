#pragma once

#include <QLatin1StringView>

#include <span>

/** How the polarities of a signal are named. */
enum class PolarityStyle { None, Level, Edge };

/** Which clock the timing fields of a signal count in. */
enum class IoClock { Fixed, Camera };

/** The fixed clock of the lines, in Hz. */
inline constexpr unsigned IoFixedClkFreq = 125000000;

/** A signal that a line can carry. */
struct SignalRow {
    QLatin1StringView token;
    QLatin1StringView label;
    unsigned modes = 0;      // bits: the keys of the modes it allows besides 0
    unsigned polarities = 0; // bits: the keys of the polarities it allows besides 0
    PolarityStyle polarityStyle = PolarityStyle::None;
    unsigned timingFields = 0; // bits 1 filter, 2 delay, 4 min, 8 max
    IoClock clock = IoClock::Fixed;
};

/** An electrical mode, by the number that the camera stores. */
struct ModeRow {
    unsigned key = 0;
    QLatin1StringView label;
    bool input = false;
    unsigned timingFields = 0;
};

/** A polarity, by the number that the camera stores. */
struct PolarityRow {
    unsigned key = 0;
    QLatin1StringView levelLabel;
    QLatin1StringView edgeLabel;
};

/** The rows of a line, by token in the order of text. */
std::span<const SignalRow> userSignalRows();
std::span<const SignalRow> triggerSignalRows();
std::span<const ModeRow> modeRows();
std::span<const PolarityRow> polarityRows();

/** A row without label, bits and style stands for what is in no table. */
const SignalRow &findSignal(std::span<const SignalRow> rows, const QString &token);
const ModeRow &findMode(int key);
const PolarityRow &findPolarity(int key);
