#include "sim/value_table.h"

#include <QRegularExpression>
#include <QStringList>

#include <array>
#include <limits>

namespace q4sim
{

namespace
{

constexpr double int32Max = std::numeric_limits<qint32>::max();
constexpr double int32Min = std::numeric_limits<qint32>::min();
constexpr double uint32Max = std::numeric_limits<quint32>::max();
constexpr double timingMax = 268435455; // 28 bits: delay, min and max of a line
constexpr double filterMax = 262143;    // 18 bits

constexpr ValueRow readOnly(const char *path)
{
    return {path, Kind::Int, Access::ReadOnly, 0, 0};
}
constexpr ValueRow integer(const char *path, double min, double max)
{
    return {path, Kind::Int, Access::Writable, min, max};
}
constexpr ValueRow real(const char *path, double min, double max)
{
    return {path, Kind::Double, Access::Writable, min, max};
}
constexpr ValueRow text(const char *path)
{
    return {path, Kind::Text, Access::Writable, 0, 0};
}

constexpr std::array rows = {
    text("camera/name"),
    readOnly("camera/serial"),
    readOnly("camera/model"),
    readOnly("camera/cfa"),
    readOnly("camera/fw_ver"),
    readOnly("camera/fw_state"),
    integer("acq/mode", 0, 1),
    readOnly("acq/state"),
    readOnly("acq/clk_freq"),
    integer("acq/exp_clks", int32Min, int32Max),
    readOnly("acq/exp_clks_min"),
    readOnly("acq/exp_clks_max"),
    readOnly("acq/exp_clks_mult"),
    readOnly("acq/exp_clks_ofst"),
    readOnly("acq/exp_time"),
    readOnly("acq/fr_rate"),
    integer("acq/fr_clks", int32Min, int32Max),
    readOnly("acq/fr_clks_min"),
    readOnly("acq/fr_clks_max"),
    integer("acq/fsync_mode", 0, 3),
    readOnly("acq/fsync_state"),
    integer("acq/trig_offset", int32Min, int32Max),
    integer("acq/prtn_cnt", 1, 1024),
    readOnly("acq/active_take"),
    readOnly("acq/bref_state"),
    integer("acq/corr_mode", 0, 1),
    text("acq/res"),
    readOnly("acq/bpp"),
    readOnly("acq/valid_res"),
    readOnly("acq/saved_takes"),
    readOnly("acq/locked_takes"),
    readOnly("lens/mount"),
    readOnly("lens/state"),
    readOnly("lens/id"),
    readOnly("lens/name"),
    readOnly("lens/af_switch"),
    readOnly("lens/focal_len_min"),
    readOnly("lens/focal_len_max"),
    readOnly("lens/focal_len"),
    readOnly("lens/fstop_min"),
    readOnly("lens/fstop_max"),
    real("lens/fstop", 0, 1000),
    readOnly("lens/focus_dist"),
    readOnly("shtr/state"),
    readOnly("ssd/state"),
    readOnly("ssd/wr_state"),
    readOnly("ssd/wr_seq"),
    readOnly("ssd/progress"),
    readOnly("ssd/name"),
    readOnly("ssd/size"),
    readOnly("ssd/used"),
    readOnly("ssd/open_takes"),
    integer("ssd/name_seq", 0, uint32Max),
    integer("ssd/autosave/mode", 0, 7),
    integer("ssd/autosave/start", int32Min, int32Max),
    integer("ssd/autosave/cnt", 0, uint32Max),
    text("ssd/autosave/name"),
    ValueRow{"meta/time", Kind::Time, Access::Writable, 0, 0},
    readOnly("meta/year_offset"),
    readOnly("time/year_offset"),
    text("video/format"),
    readOnly("video/valid_format"),
    readOnly("features/*"),
    text("io/*/signal"),
    integer("io/*/mode", 0, 16),
    integer("io/*/polarity", 0, 3),
    integer("io/*/filter", 0, filterMax),
    integer("io/*/delay", 0, timingMax),
    integer("io/*/min", 0, timingMax),
    integer("io/*/max", 0, timingMax),
    real("adjust/offset", -1, 1),
    real("adjust/offset_r", -1, 1),
    real("adjust/offset_b", -1, 1),
    real("adjust/gain", 0.1, 10),
    real("adjust/gain_r", 0.1, 10),
    real("adjust/gain_b", 0.1, 10),
    real("adjust/gamma", 0.1, 10),
    real("adjust/gamma_r", 0.1, 10),
    real("adjust/gamma_b", 0.1, 10),
    real("adjust/contrast", -1, 1),
    real("adjust/contrast_r", -1, 1),
    real("adjust/contrast_b", -1, 1),
    readOnly("adjust/cfa"),
    real("adjust/wb_r", 0.1, 10),
    real("adjust/wb_g", 0.1, 10),
    real("adjust/wb_b", 0.1, 10),
    readOnly("adjust/wb_cal_r"),
    readOnly("adjust/wb_cal_g"),
    readOnly("adjust/wb_cal_b"),
};

bool matches(const QStringList &keys, const char *pattern)
{
    const QStringList wanted = QString::fromLatin1(pattern).split(u'/');
    if (wanted.size() != keys.size())
        return false;
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (wanted[i] != u"*" && wanted[i] != keys[i])
            return false;
    }
    return true;
}

void setBelow(QJsonObject &object, const QStringList &keys, qsizetype at, const QJsonValue &value)
{
    if (at + 1 == keys.size()) {
        if (value.isUndefined())
            object.remove(keys[at]);
        else
            object[keys[at]] = value;
        return;
    }
    QJsonObject child = object.value(keys[at]).toObject();
    setBelow(child, keys, at + 1, value);
    object[keys[at]] = child;
}

} // namespace

std::optional<ValueRow> findValue(const QString &path)
{
    const QStringList keys = path.split(u'/');
    for (const ValueRow &row : rows) {
        if (matches(keys, row.path))
            return row;
    }
    return std::nullopt;
}

int takeNumber(const QString &path)
{
    static const QRegularExpression form(QStringLiteral("^takes/take([1-9]\\d{0,3})(/|$)"));
    return form.match(path).captured(1).toInt();
}

int openTakeNumber(const QString &path)
{
    static const QRegularExpression form(QStringLiteral("^ssd/takes/take([1-9]\\d{0,8})(/|$)"));
    return form.match(path).captured(1).toInt();
}

QJsonValue valueAt(const QJsonObject &tree, const QString &path)
{
    QJsonValue value = tree;
    const QStringList keys = path.split(u'/');
    for (const QString &key : keys) {
        if (!value.isObject())
            return QJsonValue::Undefined;
        value = value.toObject().value(key);
    }
    return value;
}

void setValueAt(QJsonObject &tree, const QString &path, const QJsonValue &value)
{
    setBelow(tree, path.split(u'/'), 0, value);
}

} // namespace q4sim
