#include "camera/io_tables.h"

#include <QString>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

using enum PolarityStyle;

static constexpr std::array UserSignals{
    SignalRow{""_L1, "Disabled"_L1, 0, 0, None, 0, IoClock::Camera},
    SignalRow{"event1"_L1, "Event 1"_L1, 31, 1, Level, 15, IoClock::Fixed},
    SignalRow{"event2"_L1, "Event 2"_L1, 31, 1, Level, 15, IoClock::Fixed},
    SignalRow{"fsync"_L1, "Frame Sync"_L1, 5, 3, Edge, 15, IoClock::Camera},
    SignalRow{"irig"_L1, "IRIG"_L1, 5, 0, None, 0, IoClock::Fixed},
    SignalRow{"ready"_L1, "Ready"_L1, 12, 1, Level, 14, IoClock::Fixed},
    SignalRow{"rec"_L1, "Record"_L1, 12, 1, Level, 14, IoClock::Fixed},
    SignalRow{"shtr"_L1, "Shutter"_L1, 4, 1, Level, 14, IoClock::Camera},
    SignalRow{"trig"_L1, "Trigger"_L1, 31, 3, Edge, 15, IoClock::Fixed},
};

// A trigger line that is disabled counts in the fixed clock, unlike the other lines.
static constexpr std::array TriggerSignals{
    SignalRow{""_L1, "Disabled"_L1, 0, 0, None, 0, IoClock::Fixed},
    SignalRow{"trig"_L1, "Enabled"_L1, 27, 3, Edge, 15, IoClock::Fixed},
};

static constexpr std::array Modes{
    ModeRow{0, "Disabled"_L1, false, 0},         ModeRow{1, "Input"_L1, true, 15},
    ModeRow{2, "Input w/ Pull-up"_L1, true, 15}, ModeRow{4, "Output"_L1, false, 14},
    ModeRow{8, "OD Output"_L1, false, 14},       ModeRow{16, "OD Bidirectional"_L1, true, 13},
};

static constexpr std::array Polarities{
    PolarityRow{0, "Active High"_L1, "Rising Edge"_L1},
    PolarityRow{1, "Active Low"_L1, "Falling Edge"_L1},
    PolarityRow{2, ""_L1, "Falling (Trailing)"_L1},
    PolarityRow{3, ""_L1, "Rising (Trailing)"_L1},
};

std::span<const SignalRow> userSignalRows()
{
    return UserSignals;
}

std::span<const SignalRow> triggerSignalRows()
{
    return TriggerSignals;
}

std::span<const ModeRow> modeRows()
{
    return Modes;
}

std::span<const PolarityRow> polarityRows()
{
    return Polarities;
}

template <class Row, class Matches> static const Row &find(std::span<const Row> rows, Matches matches)
{
    static const Row unknown{};
    const auto row = std::ranges::find_if(rows, matches);
    return row == rows.end() ? unknown : *row;
}

const SignalRow &findSignal(std::span<const SignalRow> rows, const QString &token)
{
    return find<SignalRow>(rows, [&](const SignalRow &row) { return row.token == token; });
}

const ModeRow &findMode(int key)
{
    return find<ModeRow>(Modes, [=](const ModeRow &row) { return int(row.key) == key; });
}

const PolarityRow &findPolarity(int key)
{
    return find<PolarityRow>(Polarities, [=](const PolarityRow &row) { return int(row.key) == key; });
}
