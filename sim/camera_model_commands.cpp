#include "sim/camera_model.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <optional>

namespace q4sim
{

namespace
{

Answer done()
{
    return jsonAnswer({});
}

std::optional<int> integer(const QJsonObject &arguments, const char *key)
{
    const QJsonValue value = arguments[QLatin1StringView(key)];
    const double number = value.toDouble(0.5);
    // Beyond the range of int, or with a fraction, the number is none.
    if (!value.isDouble() || number != double(value.toInt()))
        return std::nullopt;
    return value.toInt();
}

Answer missing(const char *key)
{
    return refusal(400, QStringLiteral("\"%1\" must be a whole number").arg(QLatin1StringView(key)));
}

} // namespace

Answer CameraModel::post(const QString &path, const QByteArray &body, qint64 nowNs)
{
    struct Entry {
        Command command;
        bool hasArguments;
    };
    static const std::map<QString, Entry> commands = {
        {QStringLiteral("rec"), {&CameraModel::record, false}},
        {QStringLiteral("trig"), {&CameraModel::trigger, false}},
        {QStringLiteral("abort"), {&CameraModel::abort, false}},
        {QStringLiteral("bref"), {&CameraModel::blackReference, false}},
        {QStringLiteral("del"), {&CameraModel::deleteTakes, true}},
        {QStringLiteral("prtn"), {&CameraModel::partition, true}},
        {QStringLiteral("focus"), {&CameraModel::focus, true}},
        {QStringLiteral("shtr"), {&CameraModel::moveShutter, true}},
        {QStringLiteral("ssd-ls"), {&CameraModel::ssdList, true}},
        {QStringLiteral("ssd-umount"), {&CameraModel::ssdUmount, false}},
        {QStringLiteral("ssd-format"), {&CameraModel::ssdFormat, true}},
        {QStringLiteral("ssd-fopen"), {&CameraModel::ssdOpen, true}},
        {QStringLiteral("ssd-fclose"), {&CameraModel::ssdClose, true}},
        {QStringLiteral("ssd-save"), {&CameraModel::ssdSave, true}},
        {QStringLiteral("xfer"), {&CameraModel::transfer, true}},
    };
    const auto found = commands.find(path);
    if (found == commands.end())
        return refusal(404, QStringLiteral("no command /%1").arg(path));
    QJsonObject arguments;
    if (found->second.hasArguments) {
        const QJsonDocument document = QJsonDocument::fromJson(body);
        if (!document.isObject())
            return refusal(400, QStringLiteral("not a JSON object"));
        arguments = document.object();
    }
    return (this->*found->second.command)(arguments, nowNs);
}

Answer CameraModel::record(const QJsonObject &, qint64 nowNs)
{
    if (!m_recorder.record(m_frameClock.frameAt(nowNs)))
        return refusal(409, QStringLiteral("not in standby, or no free partition"));
    return done();
}

Answer CameraModel::trigger(const QJsonObject &, qint64 nowNs)
{
    if (!m_recorder.trigger(m_frameClock.frameAt(nowNs), m_trigOffset, footageNow(nowNs)))
        return refusal(409, QStringLiteral("not recording"));
    return done();
}

Answer CameraModel::abort(const QJsonObject &, qint64)
{
    if (!m_recorder.abort())
        return refusal(409, QStringLiteral("not recording"));
    return done();
}

Answer CameraModel::blackReference(const QJsonObject &, qint64 nowNs)
{
    if (m_recorder.state() == Recorder::Triggered)
        return refusal(409, QStringLiteral("triggered"));
    if (!m_blackReference.start(nowNs))
        return refusal(409, QStringLiteral("in progress, or no free slot"));
    return jsonAnswer({{"bref_state", m_blackReference.state(nowNs)}});
}

Answer CameraModel::deleteTakes(const QJsonObject &arguments, qint64)
{
    const std::optional<int> number = integer(arguments, "take");
    if (!number)
        return missing("take");
    if (m_recorder.lockedTakes().contains(*number))
        return refusal(409, QStringLiteral("take %1 is locked").arg(*number));
    if (!m_recorder.remove(*number))
        return refusal(404, QStringLiteral("no take %1").arg(*number));
    if (m_recorder.savedTakes().isEmpty())
        m_blackReference.freeSlots();
    return done();
}

Answer CameraModel::partition(const QJsonObject &arguments, qint64 nowNs)
{
    const std::optional<int> count = integer(arguments, "cnt");
    if (!count)
        return missing("cnt");
    if (*count < 1 || *count > 1024)
        return refusal(400, QStringLiteral("1 to 1024 partitions"));
    if (!m_recorder.partition(*count, m_frameClock.frameAt(nowNs)))
        return refusal(409, QStringLiteral("triggered, or a take is locked"));
    m_blackReference.freeSlots();
    updatePartitions(nowNs);
    return done();
}

Answer CameraModel::focus(const QJsonObject &arguments, qint64 nowNs)
{
    const std::optional<int> step = integer(arguments, "step");
    if (!step)
        return missing("step");
    if ((feature("lens") & 2) == 0 || !m_lens.canFocus(nowNs))
        return refusal(409, QStringLiteral("no lens that the camera can focus"));
    m_lens.move(*step, nowNs);
    return done();
}

Answer CameraModel::moveShutter(const QJsonObject &arguments, qint64 nowNs)
{
    const std::optional<int> pos = integer(arguments, "pos");
    if (!pos || *pos < 0 || *pos > 1)
        return refusal(400, QStringLiteral("\"pos\" must be 0 or 1"));
    if ((feature("shtr") & 1) == 0)
        return refusal(409, QStringLiteral("no shutter"));
    m_shutter.move(*pos == 1, nowNs);
    return done();
}

} // namespace q4sim
