#include "sim/camera_model.h"

#include "sim/frame_run.h"
#include "sim/sensor_rules.h"
#include "sim/value_table.h"

#include <algorithm>
#include <cmath>

// Takes: what they tell, their frames, and takes that are made without recording.
namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;
constexpr double latest = 7258118400.0; ///< 2200-01-01, in seconds since 1970

} // namespace

std::optional<qint64> wholeNumber(const QJsonValue &value)
{
    // Up to where the numbers of JSON are exact.
    const double number = value.toDouble(0.5);
    if (!value.isDouble() || number != std::floor(number) || std::abs(number) > 9007199254740992.0)
        return std::nullopt;
    return value.toInteger();
}

QJsonObject CameraModel::framesOf(qint64 first, qint64 last)
{
    return {{"first_fr", first},
            {"last_fr", last},
            {"fr_cnt", last - first + 1},
            {"pt_fr_cnt", std::max<qint64>(last - std::max<qint64>(first, 0) + 1, 0)}};
}

QJsonObject CameraModel::takeCounts(int number, qint64 nowNs) const
{
    const Recorder::Take &take = m_recorder.take(number);
    if (take.saved) {
        QJsonObject counts = framesOf(take.firstFrame, take.lastFrame);
        counts["prtn_fr_cnt"] = take.partitionFrames;
        counts["prtn_pt_cnt"] = counts.value(QStringLiteral("pt_fr_cnt"));
        return counts;
    }
    QJsonObject counts = {
        {"prtn_fr_cnt", m_recorder.partitionFrames()}, {"prtn_pt_cnt", m_trigOffset}, {"fr_cnt", 0}};
    if (m_recorder.activeTake() == number) {
        const qint64 frame = m_frameClock.frameAt(nowNs);
        counts["fr_cnt"] = m_recorder.recordedFrames(frame);
        counts["pt_fr_cnt"] = m_recorder.postTriggerFrames(frame);
    }
    return counts;
}

QJsonObject CameraModel::surroundings(qint64 nowNs) const
{
    const QJsonObject live = acquisition(nowNs);
    QJsonObject acq;
    for (const char *key : {"res", "bpp", "clk_freq", "exp_clks", "exp_time", "fr_clks", "fr_rate",
                            "fsync_mode", "fsync_state", "corr_mode"})
        acq[QLatin1StringView(key)] = live[QLatin1StringView(key)];
    QJsonObject camera = m_doc["camera"].toObject();
    camera.remove("fw_state");
    QJsonObject lens = m_lens.object(nowNs);
    lens.remove("state");
    return {{"acq", acq}, {"camera", camera}, {"lens", lens}, {"adjust", m_doc["adjust"]}};
}

std::shared_ptr<Footage> CameraModel::footageNow(qint64 nowNs) const
{
    auto footage = std::make_shared<Footage>();
    footage->scene = sceneParams();
    footage->description = surroundings(nowNs);
    footage->frRate = valueAt(footage->description, QStringLiteral("acq/fr_rate")).toDouble();
    footage->triggerNs = frameTimeNs(m_frameClock.frameAt(nowNs));
    return footage;
}

std::shared_ptr<const Footage> CameraModel::footage(int number) const
{
    if (number < 1 || number > m_recorder.partitionCount())
        return nullptr;
    return m_recorder.take(number).footage;
}

QJsonObject CameraModel::takeDescription(int number, qint64 nowNs)
{
    advance(nowNs);
    if (number < 1 || number > m_recorder.partitionCount())
        return {};
    QJsonObject take = takeCounts(number, nowNs);
    const std::shared_ptr<const Footage> recorded = footage(number);
    const bool told = recorded || m_recorder.activeTake() == number;
    const QJsonObject rest = recorded ? recorded->description : told ? surroundings(nowNs) : QJsonObject();
    for (auto it = rest.begin(); it != rest.end(); ++it)
        take[it.key()] = it.value();
    if (told)
        tellRecord(recorded.get(), &take);
    for (const auto &[path, value] : m_forced) {
        if (takeNumber(path) == number)
            setValueAt(take, path.section(u'/', 2), value);
    }
    return take;
}

void CameraModel::tellRecord(const Footage *recorded, QJsonObject *take) const
{
    const bool inMeta = m_config.yearOffsetPlace == YearOffsetPlace::Meta;
    setValueAt(*take, inMeta ? QStringLiteral("meta/size") : QStringLiteral("meta_size"), metaSize);
    if (recorded)
        setValueAt(*take, inMeta ? QStringLiteral("meta/year_offset") : QStringLiteral("time/year_offset"),
                   recorded->yearOffset());
}

Answer CameraModel::takeAnswer(const QString &path, qint64 nowNs)
{
    const int number = takeNumber(path);
    const QJsonObject take =
        number ? takeDescription(number, nowNs) : openTakeDescription(openTakeNumber(path), nowNs);
    if (take.isEmpty() || path.count(u'/') != (number ? 1 : 2))
        return refusal(404, QStringLiteral("nothing at /%1").arg(path));
    // The tree down to the take, as in the status document.
    QJsonObject tree;
    setValueAt(tree, path, take);
    return jsonAnswer(tree);
}

Answer CameraModel::transferTake(const QJsonObject &arguments)
{
    const std::optional<qint64> number = wholeNumber(arguments["take"]);
    if (!number)
        return refusal(400, QStringLiteral("\"take\" must be a whole number"));
    if (*number < 1 || *number > m_recorder.partitionCount() ||
        !m_recorder.take(static_cast<int>(*number)).saved)
        return refusal(404, QStringLiteral("no take %1").arg(*number));
    const Recorder::Take &take = m_recorder.take(static_cast<int>(*number));
    return run(take.footage, take.firstFrame, take.lastFrame, arguments);
}

Answer CameraModel::run(const std::shared_ptr<const Footage> &footage, qint64 first, qint64 last,
                        const QJsonObject &arguments)
{
    const std::optional<qint64> start = wholeNumber(arguments["start"]);
    const std::optional<qint64> count = wholeNumber(arguments["cnt"]);
    if (!start || !count || *count < 1)
        return refusal(400, QStringLiteral("\"start\" and \"cnt\" must be whole numbers"));
    if (*start < first || *start > last || *count > last - *start + 1)
        return refusal(404, QStringLiteral("there are frames %1 to %2").arg(first).arg(last));
    const SceneParams params = footage->correctedScene();
    Answer answer = frameHeaders(params);
    answer.run = std::make_shared<FrameRun>(footage, rendererFor(params), *start, *count);
    return answer;
}

std::shared_ptr<Footage> CameraModel::footageFor(const TakeOrder &order, qint64 nowNs) const
{
    std::shared_ptr<Footage> footage = footageNow(nowNs);
    SceneParams &scene = footage->scene;
    QJsonObject &told = footage->description;
    scene.look = order.look;
    scene.code = order.code;
    scene.changes = order.changes;
    scene.noise = order.look == Look::Moving ? scene.noise : 0;
    if (!order.res.isEmpty()) {
        parseResolution(order.res, &scene.width, &scene.height);
        setValueAt(told, QStringLiteral("acq/res"), order.res);
    }
    if (order.frameRate > 0.0) {
        footage->frRate = order.frameRate;
        setValueAt(told, QStringLiteral("acq/fr_rate"), order.frameRate);
        setValueAt(told, QStringLiteral("acq/fr_clks"), qRound(clkFreq / order.frameRate));
    }
    footage->firstFrame = order.first;
    return footage;
}

QString CameraModel::placeInTime(const TakeOrder &order, qint64 nowNs, Footage *footage) const
{
    // In seconds, as the nanoseconds might not fit.
    const auto seconds = [&](qint64 frame) { return double(frame) / footage->frRate; };
    const qint64 cameraNs = nowNs + m_timeOffsetNs;
    const double trigger = order.triggerNs != 0 ? double(order.triggerNs) / nsPerSecond
                                                : double(cameraNs) / nsPerSecond - seconds(order.last + 1);
    if (std::min(trigger, trigger + seconds(order.first)) < 0 ||
        std::max(trigger, trigger + seconds(order.last)) > latest)
        return QStringLiteral("the frames and the trigger must be in the years 1970 to 2199");
    footage->triggerNs = order.triggerNs;
    if (order.triggerNs == 0) // the time of a frame counts from the trigger's
        footage->triggerNs = cameraNs - footage->timeNs(order.last + 1);
    return {};
}

std::shared_ptr<Footage> CameraModel::orderedFootage(const TakeOrder &order, qint64 nowNs,
                                                     QString *error) const
{
    const std::shared_ptr<Footage> footage = footageFor(order, nowNs);
    const SceneParams &scene = footage->scene;
    *error = placeInTime(order, nowNs, footage.get());
    for (const PixelChange &change : order.changes) {
        if (change.x < 0 || change.x >= scene.width || change.y < 0 || change.y >= scene.height)
            *error = QStringLiteral("a change is outside of the picture");
    }
    return footage;
}

int CameraModel::makeTake(const TakeOrder &order, qint64 nowNs, QString *error)
{
    advance(nowNs);
    *error = orderError(order);
    if (!error->isEmpty())
        return 0;
    const std::shared_ptr<Footage> footage = orderedFootage(order, nowNs, error);
    if (!error->isEmpty())
        return 0;
    const qint64 count = order.last - order.first + 1;
    const int number = m_recorder.place(
        order.take, {.saved = true,
                     .locked = order.locked,
                     .partitionFrames = std::max<qint64>(m_recorder.partitionFrames(), count),
                     .firstFrame = order.first,
                     .lastFrame = order.last,
                     .footage = footage});
    if (number == 0)
        *error = QStringLiteral("no free partition");
    return number;
}

} // namespace q4sim
