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

constexpr std::array featureKeys = {"corr_mode", "q4fw", "lens", "shtr", "ssd-format", "ssd-save"};

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

QJsonObject features(const Config &config)
{
    const bool current = config.firmware == Firmware::New;
    QJsonObject features = {{"corr_mode", current ? 1 : 0},   {"q4fw", current ? 1 : 0},
                            {"lens", config.hasLens ? 3 : 0}, {"shtr", config.hasShutter ? 1 : 0},
                            {"ssd-format", current ? 1 : 0},  {"ssd-save", current ? 3 : 1}};
    for (auto it = config.features.begin(); it != config.features.end(); ++it) {
        if (it.value() < 0)
            features.remove(it.key());
        else
            features[it.key()] = it.value();
    }
    return features;
}

QJsonObject video(const Config &config)
{
    const QString usual = QStringLiteral("1920x1080p30");
    const bool hasUsual = config.videoFormats.isEmpty() || config.videoFormats.contains(usual);
    QJsonObject video = {{"format", hasUsual ? usual : config.videoFormats.first()}};
    if (config.tellsVideoFormats)
        video["valid_format"] = QJsonArray::fromStringList(config.videoFormats);
    return video;
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
    doc["ssd"] =
        QJsonObject{{"name_seq", 1},
                    {"autosave", QJsonObject{{"mode", 0}, {"start", -100}, {"cnt", 200}, {"name", "take"}}}};
    doc["features"] = features(config);
    doc["io"] = ioLines();
    doc["adjust"] = adjustments(config);
    doc["video"] = video(config);
    return doc;
}

QStringList featureNames()
{
    QStringList names;
    for (const char *key : featureKeys)
        names.append(QString::fromLatin1(key));
    return names;
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
