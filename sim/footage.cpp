#include "sim/footage.h"

#include "sim/config.h"
#include "sim/frame_record.h"
#include "sim/sensor_rules.h"
#include "sim/value_table.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cmath>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;
constexpr qint64 frameMax = 1LL << 40; ///< keeps times and the numbers of JSON exact
constexpr std::array lookNames = {"moving", "still", "plain"};
constexpr std::array orderKeys = {"take", "first", "last", "rate",    "trigger_ns",
                                  "res",  "scene", "code", "changes", "locked"};

// A number of JSON that must be whole; `fallback` when it is missing.
qint64 whole(const QJsonObject &json, const char *key, qint64 fallback, QString *error)
{
    const QJsonValue value = json[QLatin1StringView(key)];
    if (value.isUndefined())
        return fallback;
    const double number = value.toDouble();
    if (!value.isDouble() || number != std::floor(number) || std::abs(number) > 9e18)
        *error = QStringLiteral("\"%1\" must be a whole number").arg(QLatin1StringView(key));
    return value.toInteger(fallback);
}

int small(const QJsonObject &json, const char *key, int fallback, QString *error)
{
    const qint64 number = whole(json, key, fallback, error);
    if (std::abs(number) > 1 << 20)
        *error = QStringLiteral("\"%1\" is out of range").arg(QLatin1StringView(key));
    return static_cast<int>(number);
}

PixelChange readChange(const QJsonObject &json, QString *error)
{
    if (!json.contains("frame"))
        *error = QStringLiteral("a change must have a \"frame\"");
    PixelChange change;
    change.first = whole(json, "frame", 0, error);
    change.last = whole(json, "to", change.first, error);
    change.x = small(json, "x", 0, error);
    change.y = small(json, "y", 0, error);
    change.add = small(json, "add", 0, error);
    return change;
}

QString unknownKey(const QJsonObject &json)
{
    for (auto it = json.begin(); it != json.end(); ++it) {
        const bool known = std::any_of(orderKeys.begin(), orderKeys.end(),
                                       [&](const char *key) { return it.key() == QLatin1StringView(key); });
        if (!known)
            return it.key();
    }
    return {};
}

} // namespace

qint64 Footage::timeNs(qint64 frame) const
{
    // With 64 bits of precision the error stays far below a nanosecond for all that a test can watch.
    return triggerNs + std::llround(static_cast<long double>(frame) * nsPerSecond / frRate);
}

qint64 Footage::yearOffset() const
{
    return yearStart(timeNs(firstFrame) / nsPerSecond);
}

SceneParams Footage::correctedScene() const
{
    SceneParams corrected = scene;
    if (valueAt(description, QStringLiteral("acq/corr_mode")).toInt() != 0)
        corrected.noise = std::min(corrected.noise, 1);
    return corrected;
}

std::optional<RecordingOrder> readRecordingOrder(const QJsonObject &json, QString *error)
{
    QJsonObject rest = json;
    RecordingOrder order;
    order.name = rest.take(QStringLiteral("name")).toString();
    const QJsonValue time = rest.take(QStringLiteral("time"));
    const std::optional<TakeOrder> take = readTakeOrder(rest, error);
    if (take && (order.name.isEmpty() || !time.isDouble() || time.toInteger() < 0)) {
        *error = QStringLiteral("a recording has a \"name\" and a \"time\" of 0 or more");
        return std::nullopt;
    }
    order.time = time.toInteger();
    order.take = take.value_or(TakeOrder());
    return take ? std::optional(order) : std::nullopt;
}

QString orderError(const TakeOrder &order)
{
    int width = 0;
    int height = 0;
    if (order.last < order.first || order.first < -frameMax || order.last > frameMax)
        return QStringLiteral("the frames must be first to last, within +-%1").arg(frameMax);
    if (order.frameRate != 0.0 && !(order.frameRate >= 0.1 && order.frameRate <= clkFreq))
        return QStringLiteral("the rate must be 0.1 to %1").arg(clkFreq);
    if (!order.res.isEmpty() && !parseResolution(order.res, &width, &height))
        return QStringLiteral("\"%1\" is no resolution").arg(order.res);
    if (order.code < 0 || order.code > 255)
        return QStringLiteral("the code must be 0 to 255");
    return {};
}

std::optional<TakeOrder> readTakeOrder(const QJsonObject &json, QString *error)
{
    error->clear();
    if (const QString key = unknownKey(json); !key.isEmpty())
        *error = QStringLiteral("unknown \"%1\"").arg(key);
    TakeOrder order;
    order.take = small(json, "take", order.take, error);
    order.first = whole(json, "first", order.first, error);
    order.last = whole(json, "last", order.last, error);
    order.frameRate = json["rate"].toDouble(json.contains("rate") ? -1.0 : 0.0);
    order.triggerNs = whole(json, "trigger_ns", order.triggerNs, error);
    order.res = json["res"].toString();
    const QString look = json["scene"].toString(QString::fromLatin1(lookNames[0]));
    const auto named = std::find_if(lookNames.begin(), lookNames.end(),
                                    [&look](const char *name) { return look == QLatin1StringView(name); });
    if (named == lookNames.end())
        *error = QStringLiteral("unknown \"scene\": %1").arg(look);
    order.look = static_cast<Look>(named - lookNames.begin());
    order.code = small(json, "code", order.code, error);
    const QJsonArray changes = json["changes"].toArray();
    for (const QJsonValue &change : changes)
        order.changes.push_back(readChange(change.toObject(), error));
    order.locked = json["locked"].toBool();
    if (error->isEmpty())
        *error = orderError(order);
    return error->isEmpty() ? std::optional(order) : std::nullopt;
}

} // namespace q4sim
