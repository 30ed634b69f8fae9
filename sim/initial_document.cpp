#include "sim/initial_document.h"

#include "sim/sensor_rules.h"
#include "sim/value_table.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace q4sim
{

namespace
{

constexpr std::array videoFormats = {"1280x720p23.98",  "1280x720p24",  "1280x720p25",    "1280x720p29.97",
                                     "1280x720p30",     "1280x720p50",  "1280x720p59.94", "1280x720p60",
                                     "1920x1080p23.98", "1920x1080p24", "1920x1080p25",   "1920x1080p29.97",
                                     "1920x1080p30"};

struct Line {
    const char *token;
    const char *signal;
    int mode;
    int filter;
};
constexpr std::array<Line, 7> lines = {{{"trigger", "trig", 2, 1250},
                                        {"io1", "fsync", 4, 0},
                                        {"io2", "rec", 4, 0},
                                        {"io3", "ready", 4, 0},
                                        {"io4", "event1", 1, 125},
                                        {"io5", "irig", 1, 0},
                                        {"io6", "", 0, 0}}};

constexpr std::array lineSignals = {"trig", "ready", "rec", "irig", "event1", "event2", "fsync", "shtr"};

QJsonObject acquisition(const Config &config)
{
    const QStringList list =
        config.resolutions.isEmpty() ? defaultResolutions(config.cfa) : config.resolutions;
    return {{"mode", 0},
            {"clk_freq", clkFreq},
            {"exp_clks_min", expClksMin},
            {"exp_clks_mult", expClksMult},
            {"exp_clks_ofst", expClksOfst},
            {"fr_clks_max", frClksMax},
            {"fsync_mode", 0},
            {"fsync_state", 0},
            {"prtn_cnt", config.partitions},
            {"corr_mode", 0},
            {"res", list.first()},
            {"bpp", 8},
            {"valid_res", QJsonArray::fromStringList(list)}};
}

QJsonObject lens(bool present)
{
    if (!present)
        return {{"mount", "EF"},      {"state", 0},     {"id", 0},
                {"name", ""},         {"af_switch", 0}, {"focal_len_min", 0},
                {"focal_len_max", 0}, {"focal_len", 0}, {"fstop_min", 0.0},
                {"fstop_max", 0.0},   {"fstop", 0.0},   {"focus_dist", 0.0}};
    return {{"mount", "EF"},     {"state", 3},          {"id", 61182},         {"name", "24-70mm f/2.8"},
            {"af_switch", 0},    {"focal_len_min", 24}, {"focal_len_max", 70}, {"focal_len", 50},
            {"fstop_min", 22.0}, {"fstop_max", 2.8},    {"fstop", 4.0}};
}

QJsonObject features(const Config &config)
{
    const bool current = config.firmware == Firmware::New;
    return {{"corr_mode", current ? 1 : 0},   {"q4fw", current ? 1 : 0},
            {"lens", config.hasLens ? 3 : 0}, {"shtr", config.hasShutter ? 1 : 0},
            {"ssd-format", current ? 1 : 0},  {"ssd-save", current ? 3 : 1}};
}

QJsonObject adjustments(const Config &config)
{
    QJsonObject adjust = {{"cfa", config.cfa}, {"wb_r", 1.0},     {"wb_g", 1.0},    {"wb_b", 1.0},
                          {"wb_cal_r", 1.0},   {"wb_cal_g", 1.0}, {"wb_cal_b", 1.0}};
    for (const char *suffix : {"", "_r", "_b"}) {
        const QString end = QString::fromLatin1(suffix);
        adjust[QStringLiteral("offset") + end] = 0.0;
        adjust[QStringLiteral("gain") + end] = 1.0;
        adjust[QStringLiteral("gamma") + end] = 1.0;
        adjust[QStringLiteral("contrast") + end] = 0.0;
    }
    return adjust;
}

QJsonObject ioLines()
{
    QJsonObject io;
    for (const Line &line : lines) {
        io[QString::fromLatin1(line.token)] = QJsonObject{{"signal", line.signal},
                                                          {"mode", line.mode},
                                                          {"polarity", 0},
                                                          {"filter", line.filter},
                                                          {"delay", 0},
                                                          {"min", 0},
                                                          {"max", 0}};
    }
    return io;
}

} // namespace

QJsonObject initialDocument(const Config &config)
{
    QJsonObject doc;
    const bool current = config.firmware == Firmware::New;
    doc["camera"] = QJsonObject{{"name", config.name},
                                {"serial", config.serial},
                                {"model", config.model},
                                {"cfa", config.cfa},
                                {"fw_ver", current ? QJsonValue("3.2.1") : QJsonValue(117)},
                                {"fw_state", 0}};
    doc["acq"] = acquisition(config);
    doc["lens"] = lens(config.hasLens);
    doc["ssd"] =
        QJsonObject{{"name_seq", 1},
                    {"autosave", QJsonObject{{"mode", 0}, {"start", -100}, {"cnt", 200}, {"name", "take"}}}};
    doc["features"] = features(config);
    doc["io"] = ioLines();
    doc["adjust"] = adjustments(config);
    QJsonArray formats;
    for (const char *format : videoFormats)
        formats.append(QString::fromLatin1(format));
    doc["video"] = QJsonObject{{"format", "1920x1080p30"}, {"valid_format", formats}};
    return doc;
}

bool lineAllowsSignal(const QString &line, const QString &signal)
{
    if (signal.isEmpty())
        return true;
    if (line == u"trigger")
        return signal == u"trig";
    return std::any_of(lineSignals.begin(), lineSignals.end(),
                       [&signal](const char *known) { return signal == QLatin1StringView(known); });
}

} // namespace q4sim
