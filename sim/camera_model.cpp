#include "sim/camera_model.h"

#include "sim/frame_record.h"
#include "sim/initial_document.h"
#include "sim/value_table.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimeZone>

#include <algorithm>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;

QJsonArray numbers(const QList<int> &list)
{
    QJsonArray array;
    for (int n : list)
        array.append(n);
    return array;
}

} // namespace

Answer refusal(int status, const QString &text)
{
    Answer answer = jsonAnswer({{"error", text}});
    answer.status = status;
    return answer;
}

Answer jsonAnswer(const QJsonObject &object)
{
    Answer answer;
    answer.body = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return answer;
}

CameraModel::CameraModel(const Config &config)
    : m_config(config), m_doc(initialDocument(config)), m_frClks(frClksMax), m_trigOffset(1),
      m_syncFps(config.syncFps), m_frameClock(config.clock->nowNs(), frClksMax),
      m_recorder(config.partitions), m_blackReference(config.blackRefSlots),
      m_lens(config.hasLens, config.afSwitch), m_shutter(config.shutterFails),
      m_drive(config.driveBytes, config.driveBytesPerSecond), m_update(config.rejectedFirmware)
{
    const qint64 nowNs = config.clock->nowNs();
    m_recorder.setCyclic(config.partitionOrder == PartitionOrder::Next);
    setResolution(valueAt(m_doc, QStringLiteral("acq/res")).toString(), nowNs);
    // Limited before it is rounded: a slow enough rate has more clocks a frame than an integer holds.
    setFrClks(qRound64(std::min(clkFreq / config.frameRate, double(frClksMax))), nowNs);
    m_expClks = snapExposure(m_frClks / 2, m_frClks);
    m_trigOffset = std::max(m_recorder.partitionFrames() / 2, 1);
    m_drive.setRecordings(initialRecordings());
    m_drive.mount(config.hasSsd ? config.medium : Medium::None);
    for (const TakeOrder &order : config.takes) {
        if (m_startError.isEmpty())
            makeTake(order, nowNs, &m_startError);
    }
}

Answer CameraModel::handle(const Request &request)
{
    advance(request.timeNs);
    const QString path = request.path.mid(1);
    if (request.method == "PUT")
        return put(path, request.body, request.timeNs);
    if (request.method == "POST" && path == u"q4fw")
        return updateFirmware(request);
    if (request.method == "POST")
        return post(path, request.body, request.timeNs);
    if (request.method != "GET")
        return refusal(405, QStringLiteral("method not allowed"));
    if (path.isEmpty())
        return jsonAnswer(status(request.timeNs));
    if (path.startsWith(u"takes/") || path.startsWith(u"ssd/takes/"))
        return takeAnswer(path, request.timeNs);
    return refusal(404, QStringLiteral("nothing at /%1").arg(path));
}

void CameraModel::advance(qint64 nowNs)
{
    const QList<int> before = m_recorder.savedTakes();
    m_recorder.advance(m_frameClock.frameAt(nowNs));
    const QList<int> after = m_recorder.savedTakes();
    for (int number : after) {
        if (!before.contains(number))
            autosave(number, nowNs);
    }
    const QList<Drive::Save> done = m_drive.advance(nowNs);
    unlock(done);
    for (const Drive::Save &save : done) {
        if (save.deletesTake)
            m_recorder.remove(save.take);
    }
}

QJsonObject CameraModel::status(qint64 nowNs)
{
    advance(nowNs);
    QJsonObject doc = m_doc;
    doc["acq"] = acquisition(nowNs);
    doc["takes"] = QJsonObject{{"take1", takeCounts(1, nowNs)}};
    setValueAt(doc, QStringLiteral("camera/fw_state"), m_update.state(nowNs));
    doc["lens"] = m_lens.object(nowNs);
    doc["shtr"] = QJsonObject{{"state", m_shutter.state(nowNs)}};
    doc["ssd"] = drive(nowNs);
    const qint64 seconds = (nowNs + m_timeOffsetNs) / nsPerSecond;
    const QDateTime time = QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::UTC);
    doc["meta"] = QJsonObject{{"time", time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))}};
    const bool inMeta = m_config.yearOffsetPlace == YearOffsetPlace::Meta;
    setValueAt(doc, inMeta ? QStringLiteral("meta/year_offset") : QStringLiteral("time/year_offset"),
               yearStart(seconds));
    for (const auto &[path, value] : m_forced)
        setValueAt(doc, path, value);
    return doc;
}

QJsonObject CameraModel::acquisition(qint64 nowNs) const
{
    QJsonObject acq = m_doc["acq"].toObject();
    acq["state"] = m_recorder.state();
    acq["exp_clks"] = m_expClks;
    acq["exp_clks_max"] = expClksMaxFor(runningFrClks());
    acq["exp_time"] = m_expClks * 1e6 / clkFreq;
    acq["fr_rate"] = synced() ? m_syncFps : double(clkFreq) / m_frClks;
    acq["fr_clks"] = m_frClks;
    acq["fr_clks_min"] = frClksMin(m_width, m_height);
    acq["fsync_mode"] = m_fsyncMode;
    // No source but the camera's own clock and the sync input is ever plugged in.
    acq["fsync_state"] = m_fsyncMode == FsyncInternal ? 0 : (synced() ? 1 : -1);
    acq["trig_offset"] = m_trigOffset;
    acq["prtn_cnt"] = m_recorder.partitionCount();
    acq["active_take"] = m_recorder.activeTake();
    acq["bref_state"] = m_blackReference.state(nowNs);
    acq["saved_takes"] = numbers(m_recorder.savedTakes());
    acq["locked_takes"] = numbers(m_recorder.lockedTakes());
    return acq;
}

QJsonObject CameraModel::drive(qint64 nowNs) const
{
    QJsonObject ssd = m_doc["ssd"].toObject();
    const QJsonObject moving = m_drive.object(nowNs);
    for (auto it = moving.begin(); it != moving.end(); ++it)
        ssd[it.key()] = it.value();
    if (feature("ssd-save") < 2)
        ssd.remove("wr_seq");
    return ssd;
}

void CameraModel::forceValue(const QString &path, const QJsonValue &value)
{
    if (value.isUndefined())
        m_forced.erase(path);
    else
        m_forced[path] = value;
}

void CameraModel::setResolution(const QString &res, qint64 nowNs)
{
    parseResolution(res, &m_width, &m_height);
    setValueAt(m_doc, QStringLiteral("acq/res"), res);
    setFrClks(m_frClks, nowNs);
    m_blackReference.invalidate();
    updatePartitions(nowNs);
}

void CameraModel::setFrClks(qint64 wanted, qint64 nowNs)
{
    m_frClks = static_cast<int>(std::clamp<qint64>(wanted, frClksMin(m_width, m_height), frClksMax));
    retime(nowNs);
}

bool CameraModel::synced() const
{
    // A signal faster than the sensor is no signal to it.
    return m_fsyncMode == FsyncExternal && m_syncFps > 0.0 &&
           clkFreq / m_syncFps >= frClksMin(m_width, m_height);
}

int CameraModel::runningFrClks() const
{
    // Slower than the camera's own slowest rate is allowed, within what a number of clocks can hold.
    return synced() ? static_cast<int>(std::min(clkFreq / m_syncFps, 1e9)) : m_frClks;
}

void CameraModel::setSyncFps(double fps, qint64 nowNs)
{
    m_syncFps = fps;
    retime(nowNs);
}

void CameraModel::retime(qint64 nowNs)
{
    m_frameClock.retime(nowNs, runningFrClks());
    m_expClks = snapExposure(m_expClks, runningFrClks());
}

int CameraModel::feature(const char *name) const
{
    return m_doc["features"].toObject().value(QLatin1StringView(name)).toInt();
}

void CameraModel::updatePartitions(qint64 nowNs)
{
    const int frames = partitionFrames(m_config.memoryBytes, m_recorder.partitionCount(), m_width, m_height);
    m_recorder.setPartitionFrames(std::max(frames, 1), m_frameClock.frameAt(nowNs));
    m_trigOffset = std::clamp(m_trigOffset, 1, m_recorder.partitionFrames());
}

SceneParams CameraModel::sceneParams() const
{
    SceneParams params;
    params.width = m_width;
    params.height = m_height;
    params.cfa = m_config.cfa;
    params.seed = m_config.seed;
    // An exposure of half a millisecond shows the scene as it is drawn.
    const qint64 gain = qint64(m_expClks) * 256 * 2000 / clkFreq;
    params.gainQ8 = static_cast<int>(std::clamp<qint64>(gain, 8, 2048));
    return params;
}

std::shared_ptr<const SceneRenderer> CameraModel::rendererFor(const SceneParams &params)
{
    // A client that looks at the live picture and at takes in turn has all of them ready.
    constexpr qsizetype kept = 4;
    const auto found = std::find_if(m_renderers.begin(), m_renderers.end(),
                                    [&](const auto &renderer) { return renderer->params() == params; });
    if (found != m_renderers.end())
        m_renderers.move(found - m_renderers.begin(), 0);
    else
        m_renderers.prepend(std::make_shared<const SceneRenderer>(params));
    m_renderers.resize(std::min(m_renderers.size(), kept));
    return m_renderers.first();
}

Answer CameraModel::frameHeaders(const SceneParams &params) const
{
    const bool img = m_config.headerFamily == HeaderFamily::Img;
    Answer answer;
    answer.contentType = "application/octet-stream";
    answer.headers = {{img ? "Img-Width" : "Fr-Width", QByteArray::number(params.width)},
                      {img ? "Img-Height" : "Fr-Height", QByteArray::number(params.height)},
                      {img ? "Img-Size" : "Fr-Size", QByteArray::number(params.width * params.height)},
                      {"Meta-Size", QByteArray::number(metaSize)}};
    return answer;
}

Answer CameraModel::transfer(const QJsonObject &arguments, qint64 nowNs)
{
    if (arguments["type"].toInt() != 3 || !arguments["src"].isDouble())
        return refusal(400, QStringLiteral("unknown kind of transfer"));
    if (arguments["src"].toInt() == 0)
        return transferTake(arguments);
    if (arguments["src"].toInt() == 2)
        return transferOpenTake(arguments);
    if (arguments["src"].toInt() != 1)
        return refusal(404, QStringLiteral("no such source"));
    const SceneParams params = sceneParams();
    const qint64 frame = liveFrame(nowNs);
    const qint64 timeNs = frameTimeNs(frame);
    Answer answer = frameHeaders(params);
    answer.body = frameRecord(*rendererFor(params), frame, timeNs, yearStart(timeNs / nsPerSecond));
    return answer;
}

} // namespace q4sim
