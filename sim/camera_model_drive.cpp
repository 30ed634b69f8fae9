#include "sim/camera_model.h"

#include "sim/sensor_rules.h"
#include "sim/value_table.h"

#include <QDateTime>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTimeZone>

#include <algorithm>

// The drive: its recordings, saves of takes onto it, and recordings that were opened.
namespace q4sim
{

namespace
{

// Bits of ssd/autosave/mode.
constexpr int autosaveEnabled = 1;
constexpr int autosaveSelection = 2;
constexpr int autosaveDeletesTake = 4;

constexpr qint64 nsPerSecond = 1000000000;
constexpr qsizetype longestName = 255; // bytes, with the extension

qint64 bytesOf(const Footage &footage, qint64 first, qint64 last)
{
    return (last - first + 1) * (metaSize + qint64(footage.scene.width) * footage.scene.height);
}

Answer notReady()
{
    return refusal(409, QStringLiteral("the drive is not ready"));
}

// Replaces "<seq>", "<seq:DIGITS>", "<time>" and "<time:FORM>" of a name template.
QString expanded(QString name, quint32 seq, const QDateTime &time)
{
    static const QRegularExpression tag(QStringLiteral("<(seq|time)(?::([^>]*))?>"));
    for (QRegularExpressionMatch match = tag.match(name); match.hasMatch(); match = tag.match(name)) {
        const QString detail = match.captured(2);
        const QString text =
            match.captured(1) == u"seq"
                ? QStringLiteral("%1").arg(seq, std::clamp(detail.toInt(), 0, 10), 10, QLatin1Char('0'))
                : time.toString(detail.isEmpty() ? QStringLiteral("yyyyMMdd_HHmmss") : detail);
        // Brackets of a form of time would be taken for a tag, and never end.
        name.replace(match.capturedStart(), match.capturedLength(), QString(text).remove(u'<'));
    }
    return name;
}

} // namespace

QList<Drive::Recording> CameraModel::initialRecordings()
{
    QList<Drive::Recording> recordings;
    for (const RecordingOrder &order : m_config.recordings) {
        Drive::Recording recording;
        recording.name = order.name;
        recording.time = order.time;
        recording.firstFrame = order.take.first;
        recording.lastFrame = order.take.last;
        QString error;
        recording.footage = orderedFootage(order.take, order.time * nsPerSecond, &error);
        if (m_startError.isEmpty())
            m_startError = error;
        recording.size = bytesOf(*recording.footage, order.take.first, order.take.last);
        recordings.append(recording);
    }
    return recordings;
}

Answer CameraModel::ssdList(const QJsonObject &arguments, qint64 nowNs)
{
    if (m_drive.state(nowNs) != Drive::Ready)
        return notReady();
    const bool plainNames = m_config.firmware == Firmware::Old || arguments["long"].toInt() != 1;
    return jsonAnswer({{"ssd-ls", m_drive.listing(plainNames, nowNs)}});
}

Answer CameraModel::ssdUmount(const QJsonObject &, qint64 nowNs)
{
    if (!m_drive.umount(nowNs))
        return refusal(409, QStringLiteral("the drive is not ready, or writes"));
    return jsonAnswer({});
}

Answer CameraModel::ssdFormat(const QJsonObject &arguments, qint64 nowNs)
{
    if (feature("ssd-format") == 0)
        return refusal(404, QStringLiteral("no command /ssd-format"));
    if (!arguments["name"].isString() || arguments["name"].toString().size() > 11)
        return refusal(400, QStringLiteral("\"name\" must be a text of at most 11 characters"));
    if (!m_drive.format(arguments["name"].toString(), nowNs))
        return refusal(409, QStringLiteral("the drive is not ready, or writes"));
    return jsonAnswer({});
}

Answer CameraModel::ssdOpen(const QJsonObject &arguments, qint64 nowNs)
{
    if (m_drive.state(nowNs) != Drive::Ready)
        return notReady();
    const int number = m_drive.open(arguments["name"].toString());
    if (number == 0)
        return refusal(404, QStringLiteral("no such recording"));
    return jsonAnswer({{"take", number}});
}

Answer CameraModel::ssdClose(const QJsonObject &arguments, qint64)
{
    const std::optional<qint64> number = wholeNumber(arguments["take"]);
    if (!number || !m_drive.close(static_cast<int>(std::clamp<qint64>(*number, 0, 1 << 30))))
        return refusal(404, QStringLiteral("no such recording is open"));
    return jsonAnswer({});
}

Drive::Save CameraModel::saveOf(int number, qint64 first, qint64 last) const
{
    const Footage &footage = *m_recorder.take(number).footage;
    Drive::Save save;
    save.take = number;
    save.recording.firstFrame = first;
    save.recording.lastFrame = last;
    save.recording.size = bytesOf(footage, first, last);
    // Its own: what is written to the take later, and its end, is nothing to the recording.
    save.recording.footage = std::make_shared<Footage>(footage);
    save.recording.footage->firstFrame = first;
    return save;
}

bool CameraModel::startSave(const Drive::Save &save, qint64 nowNs)
{
    if (!m_drive.save(save, nowNs))
        return false;
    m_recorder.setLocked(save.take, true);
    return true;
}

void CameraModel::unlock(const QList<Drive::Save> &saves)
{
    for (const Drive::Save &save : saves) {
        if (!m_drive.writes(save.take))
            m_recorder.setLocked(save.take, false);
    }
}

Answer CameraModel::ssdSave(const QJsonObject &arguments, qint64 nowNs)
{
    const bool queues = feature("ssd-save") >= 2;
    if (feature("ssd-save") == 0)
        return refusal(404, QStringLiteral("no command /ssd-save"));
    const std::optional<qint64> number = wholeNumber(arguments["take"]);
    const std::optional<qint64> start = wholeNumber(arguments["start"]);
    const std::optional<qint64> count = wholeNumber(arguments["cnt"]);
    if (!number || !start || !count || *count < 1)
        return refusal(400, QStringLiteral("\"take\", \"start\" and \"cnt\" must be whole numbers"));
    if (!m_recorder.savedTakes().contains(*number))
        return refusal(404, QStringLiteral("no take %1").arg(*number));
    const Recorder::Take &take = m_recorder.take(static_cast<int>(*number));
    if (*start < take.firstFrame || *start > take.lastFrame || *count > take.lastFrame - *start + 1)
        return refusal(404,
                       QStringLiteral("there are frames %1 to %2").arg(take.firstFrame).arg(take.lastFrame));
    const QString name = queues ? arguments["name"].toString() : QStringLiteral("take%1").arg(*number);
    Drive::Save save = saveOf(static_cast<int>(*number), *start, *start + *count - 1);
    save.recording.name = m_drive.freeName(name);
    if (name.isEmpty() || name.contains(u'/') || save.recording.name.toUtf8().size() > longestName)
        return refusal(400, QStringLiteral("not a name for a recording"));
    if (m_drive.state(nowNs) != Drive::Ready || (!queues && m_drive.writes()))
        return refusal(409, QStringLiteral("the drive is not ready, or writes"));
    if (!startSave(save, nowNs))
        return refusal(507, QStringLiteral("the drive is full"));
    if (!queues)
        return jsonAnswer({});
    return jsonAnswer({{"seq", m_drive.lastSeq()}, {"name", save.recording.name}});
}

QJsonObject CameraModel::openTakeDescription(int number, qint64 nowNs)
{
    advance(nowNs);
    const Drive::Recording *recording = m_drive.openTake(number);
    if (!recording)
        return {};
    QJsonObject take = framesOf(recording->firstFrame, recording->lastFrame);
    const QJsonObject &rest = recording->footage->description;
    for (auto it = rest.begin(); it != rest.end(); ++it)
        take[it.key()] = it.value();
    tellRecord(recording->footage.get(), &take);
    for (const auto &[path, value] : m_forced) {
        if (openTakeNumber(path) == number)
            setValueAt(take, path.section(u'/', 3), value);
    }
    return take;
}

std::shared_ptr<const Footage> CameraModel::openFootage(int number) const
{
    const Drive::Recording *recording = m_drive.openTake(number);
    return recording ? recording->footage : nullptr;
}

Answer CameraModel::transferOpenTake(const QJsonObject &arguments)
{
    const int number = arguments["take"].toInt();
    const Drive::Recording *recording = m_drive.openTake(number);
    if (!recording)
        return refusal(404, QStringLiteral("no recording %1 is open").arg(number));
    return run(recording->footage, recording->firstFrame, recording->lastFrame, arguments);
}

void CameraModel::autosave(int number, qint64 nowNs)
{
    const QJsonObject settings = valueAt(m_doc, QStringLiteral("ssd/autosave")).toObject();
    const int mode = settings["mode"].toInt();
    if (feature("ssd-save") < 3 || (mode & autosaveEnabled) == 0)
        return;
    const Recorder::Take &take = m_recorder.take(number);
    qint64 first = take.firstFrame;
    qint64 last = take.lastFrame;
    if ((mode & autosaveSelection) != 0) {
        first = std::max(first, settings["start"].toInteger());
        last = std::min(last, settings["start"].toInteger() + settings["cnt"].toInteger() - 1);
    }
    if (last < first)
        return;
    const QString seqPath = QStringLiteral("ssd/name_seq");
    const auto seq = static_cast<quint32>(valueAt(m_doc, seqPath).toInteger());
    const QDateTime time = QDateTime::fromMSecsSinceEpoch((nowNs + m_timeOffsetNs) / 1000000, QTimeZone::UTC);
    Drive::Save save = saveOf(number, first, last);
    save.recording.name = m_drive.freeName(expanded(settings["name"].toString(), seq, time));
    save.deletesTake = (mode & autosaveDeletesTake) != 0;
    if (!startSave(save, nowNs))
        return;
    if (settings["name"].toString().contains(u"<seq"))
        setValueAt(m_doc, seqPath, qint64(seq + 1));
}

} // namespace q4sim
