#include "sim/camera_model.h"

#include "sim/initial_document.h"
#include "sim/value_table.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <optional>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;
constexpr auto timeForm = "yyyy-MM-dd HH:mm:ss";

Answer accepted()
{
    return jsonAnswer({});
}

// A write carries a lone scalar, which the parser takes only inside of an array.
std::optional<QJsonValue> scalar(const QByteArray &body)
{
    const QJsonArray wrapped = QJsonDocument::fromJson('[' + body + ']').array();
    if (wrapped.size() != 1 || wrapped[0].isArray() || wrapped[0].isObject() || wrapped[0].isNull())
        return std::nullopt;
    return wrapped[0];
}

// Invalid when out of the years whose nanoseconds fit into 64 bits with room to spare.
QDateTime parseTime(const QJsonValue &value)
{
    QDateTime time = QDateTime::fromString(value.toString(), QString::fromLatin1(timeForm));
    time.setTimeZone(QTimeZone::UTC);
    const int year = time.date().year();
    return year >= 1970 && year < 2200 ? time : QDateTime();
}

// Why a value does not fit its row; empty when it does.
QString misfit(const ValueRow &row, const QJsonValue &value)
{
    if (row.kind == Kind::Text)
        return value.isString() ? QString() : QStringLiteral("not a text");
    if (row.kind == Kind::Time)
        return parseTime(value).isValid() ? QString() : QStringLiteral("not a time");
    if (!value.isDouble())
        return QStringLiteral("not a number");
    const double number = value.toDouble();
    if (row.kind == Kind::Int && number != std::floor(number))
        return QStringLiteral("not a whole number");
    if (number < row.min || number > row.max)
        return QStringLiteral("out of range");
    return {};
}

} // namespace

Answer CameraModel::put(const QString &path, const QByteArray &body, qint64 nowNs)
{
    if (const int number = takeNumber(path); number > 0)
        return putOfTake(number, path.section(u'/', 2), body, nowNs);
    if (const int number = openTakeNumber(path); number > 0)
        return putOfOpenTake(number, path.section(u'/', 3), body, nowNs);
    const std::optional<ValueRow> row = findValue(path);
    if (!row || valueAt(status(nowNs), path).isUndefined())
        return refusal(404, QStringLiteral("no value at /%1").arg(path));
    if (row->access == Access::ReadOnly)
        return refusal(403, QStringLiteral("/%1 is read-only").arg(path));
    const std::optional<QJsonValue> value = scalar(body);
    if (!value)
        return refusal(400, QStringLiteral("not a JSON scalar"));
    if (const QString text = misfit(*row, *value); !text.isEmpty())
        return refusal(400, text);
    return (this->*setterFor(path))(path, *value, nowNs);
}

Answer CameraModel::putOfTake(int number, const QString &path, const QByteArray &body, qint64 nowNs)
{
    if (valueAt(takeDescription(number, nowNs), path).isUndefined())
        return refusal(404, QStringLiteral("take %1 has no value at /%2").arg(number).arg(path));
    const std::optional<ValueRow> row = findValue(path);
    const bool open = path == u"acq/corr_mode" || path.startsWith(u"adjust/");
    if (!open || !row || row->access == Access::ReadOnly)
        return refusal(403, QStringLiteral("/%1 of a take is read-only").arg(path));
    if (!m_recorder.take(number).saved)
        return refusal(409, QStringLiteral("take %1 is not saved").arg(number));
    const std::optional<QJsonValue> value = scalar(body);
    if (!value)
        return refusal(400, QStringLiteral("not a JSON scalar"));
    if (const QString text = misfit(*row, *value); !text.isEmpty())
        return refusal(400, text);
    if (path == u"acq/corr_mode" && (value->toInt() & ~feature("corr_mode")) != 0)
        return refusal(400, QStringLiteral("no such correction"));
    setValueAt(m_recorder.take(number).footage->description, path, *value);
    return accepted();
}

Answer CameraModel::putOfOpenTake(int number, const QString &path, const QByteArray &body, qint64 nowNs)
{
    if (valueAt(openTakeDescription(number, nowNs), path).isUndefined())
        return refusal(404, QStringLiteral("recording %1 has no value at /%2").arg(number).arg(path));
    const std::optional<ValueRow> row = findValue(path);
    if (!path.startsWith(u"adjust/") || !row || row->access == Access::ReadOnly)
        return refusal(403, QStringLiteral("/%1 of a recording is read-only").arg(path));
    const std::optional<QJsonValue> value = scalar(body);
    if (!value)
        return refusal(400, QStringLiteral("not a JSON scalar"));
    if (const QString text = misfit(*row, *value); !text.isEmpty())
        return refusal(400, text);
    setValueAt(m_drive.openTake(number)->footage->description, path, *value);
    return accepted();
}

CameraModel::Setter CameraModel::setterFor(const QString &path)
{
    static const std::map<QString, Setter> setters = {
        {QStringLiteral("acq/exp_clks"), &CameraModel::putExposure},
        {QStringLiteral("acq/fr_clks"), &CameraModel::putFrClks},
        {QStringLiteral("acq/res"), &CameraModel::putResolution},
        {QStringLiteral("acq/trig_offset"), &CameraModel::putTrigOffset},
        {QStringLiteral("acq/prtn_cnt"), &CameraModel::putPartitions},
        {QStringLiteral("acq/corr_mode"), &CameraModel::putCorrMode},
        {QStringLiteral("acq/mode"), &CameraModel::putAcqMode},
        {QStringLiteral("acq/fsync_mode"), &CameraModel::putFsyncMode},
        {QStringLiteral("lens/fstop"), &CameraModel::putFstop},
        {QStringLiteral("meta/time"), &CameraModel::putTime},
        {QStringLiteral("video/format"), &CameraModel::putVideoFormat},
    };
    if (path.startsWith(u"io/"))
        return &CameraModel::putLine;
    if (path.startsWith(u"ssd/autosave/"))
        return &CameraModel::putAutosave;
    const auto found = setters.find(path);
    return found == setters.end() ? &CameraModel::putPlain : found->second;
}

Answer CameraModel::putPlain(const QString &path, const QJsonValue &value, qint64)
{
    setValueAt(m_doc, path, value);
    return accepted();
}

Answer CameraModel::putExposure(const QString &, const QJsonValue &value, qint64)
{
    m_expClks = snapExposure(value.toInteger(), runningFrClks());
    return accepted();
}

Answer CameraModel::putFrClks(const QString &, const QJsonValue &value, qint64 nowNs)
{
    setFrClks(value.toInteger(), nowNs);
    return accepted();
}

Answer CameraModel::putResolution(const QString &, const QJsonValue &value, qint64 nowNs)
{
    if (!valueAt(m_doc, QStringLiteral("acq/valid_res")).toArray().contains(value))
        return refusal(400, QStringLiteral("no such resolution"));
    if (m_recorder.state() == Recorder::Triggered)
        return refusal(409, QStringLiteral("triggered"));
    setResolution(value.toString(), nowNs);
    return accepted();
}

Answer CameraModel::putTrigOffset(const QString &, const QJsonValue &value, qint64)
{
    if (m_recorder.state() == Recorder::Triggered)
        return refusal(409, QStringLiteral("triggered"));
    m_trigOffset = static_cast<int>(std::clamp<qint64>(value.toInteger(), 1, m_recorder.partitionFrames()));
    return accepted();
}

Answer CameraModel::putPartitions(const QString &, const QJsonValue &value, qint64 nowNs)
{
    return partition({{"cnt", value}}, nowNs);
}

Answer CameraModel::putAcqMode(const QString &path, const QJsonValue &value, qint64 nowNs)
{
    m_recorder.setContinuous(value.toInt() == 1);
    return putPlain(path, value, nowNs);
}

Answer CameraModel::putFsyncMode(const QString &, const QJsonValue &value, qint64 nowNs)
{
    m_fsyncMode = value.toInt();
    retime(nowNs);
    return accepted();
}

Answer CameraModel::putCorrMode(const QString &path, const QJsonValue &value, qint64 nowNs)
{
    if ((value.toInt() & ~feature("corr_mode")) != 0)
        return refusal(400, QStringLiteral("no such correction"));
    return putPlain(path, value, nowNs);
}

Answer CameraModel::putAutosave(const QString &path, const QJsonValue &value, qint64 nowNs)
{
    if (feature("ssd-save") < 3)
        return refusal(409, QStringLiteral("no autosave"));
    return putPlain(path, value, nowNs);
}

Answer CameraModel::putFstop(const QString &, const QJsonValue &value, qint64 nowNs)
{
    if ((feature("lens") & 1) == 0 || m_lens.state(nowNs) != Lens::Ready)
        return refusal(409, QStringLiteral("no lens whose f-stop can be set"));
    m_lens.setFstop(value.toDouble());
    return accepted();
}

Answer CameraModel::putTime(const QString &, const QJsonValue &value, qint64 nowNs)
{
    m_timeOffsetNs = parseTime(value).toSecsSinceEpoch() * nsPerSecond - nowNs;
    return accepted();
}

Answer CameraModel::putVideoFormat(const QString &path, const QJsonValue &value, qint64 nowNs)
{
    if (!m_config.videoFormats.contains(value.toString()))
        return refusal(400, QStringLiteral("no such format"));
    return putPlain(path, value, nowNs);
}

Answer CameraModel::putLine(const QString &path, const QJsonValue &value, qint64 nowNs)
{
    const QStringList keys = path.split(u'/');
    if (keys[2] == u"signal" && !lineAllowsSignal(keys[1], value.toString()))
        return refusal(400, QStringLiteral("no such signal"));
    // Modes are single bits.
    if (const int mode = value.toInt(); keys[2] == u"mode" && (mode & (mode - 1)) != 0)
        return refusal(400, QStringLiteral("no such mode"));
    return putPlain(path, value, nowNs);
}

} // namespace q4sim
