#include "sim/camera_model.h"

#include "sim/value_table.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTimeZone>

#include <algorithm>
#include <array>

// What happens to a camera by hand, by upload and by itself.
namespace q4sim
{

namespace
{

// Bits of ssd/autosave/mode.
constexpr int autosaveEnabled = 1;
constexpr int autosaveSelection = 2;
constexpr int autosaveDeletesTake = 4;

struct Deed {
    const char *thing;
    const char *deed;
};
constexpr std::array deeds = {
    Deed{"lens", "mount"},       Deed{"lens", "remove"},       Deed{"lens", "fail"},
    Deed{"shutter", "work"},     Deed{"shutter", "fail"},      Deed{"ssd", "insert"},
    Deed{"ssd", "insert-blank"}, Deed{"ssd", "insert-broken"}, Deed{"ssd", "remove"}};

// What is wrong with one entry of an order; empty if nothing.
QString senseless(const QString &thing, const QJsonValue &deed, const Recorder &recorder)
{
    if (thing == u"af_switch" && deed.isDouble())
        return {};
    if (thing == u"sync_fps" && deed.isDouble() && deed.toDouble() >= 0.0 && deed.toDouble() <= clkFreq)
        return {};
    if (thing == u"lock" || thing == u"unlock" || thing == u"drop")
        return recorder.savedTakes().contains(deed.toInt()) ? QString() : QStringLiteral("no such take");
    const bool known = std::any_of(deeds.begin(), deeds.end(), [&](const Deed &d) {
        return thing == QLatin1StringView(d.thing) && deed.toString() == QLatin1StringView(d.deed);
    });
    return known ? QString() : QStringLiteral("\"%1\" cannot do that").arg(thing);
}

Medium mediumOf(const QString &deed)
{
    if (deed == u"insert")
        return Medium::Formatted;
    if (deed == u"insert-blank")
        return Medium::Blank;
    return deed == u"insert-broken" ? Medium::Broken : Medium::None;
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

QString CameraModel::operate(const QJsonObject &order, qint64 nowNs)
{
    advance(nowNs);
    for (auto it = order.begin(); it != order.end(); ++it) {
        if (const QString error = senseless(it.key(), it.value(), m_recorder); !error.isEmpty())
            return error;
    }
    const QString lens = order["lens"].toString();
    if (lens == u"mount")
        m_lens.mount(nowNs);
    else if (lens == u"remove")
        m_lens.remove();
    else if (lens == u"fail")
        m_lens.fail();
    if (order.contains("af_switch"))
        m_lens.setAfSwitch(order["af_switch"].toInt());
    if (order.contains("shutter"))
        m_shutter.setFails(order["shutter"].toString() == u"fail");
    if (order.contains("sync_fps"))
        setSyncFps(order["sync_fps"].toDouble(), nowNs);
    m_recorder.setLocked(order["lock"].toInt(), true);
    m_recorder.setLocked(order["unlock"].toInt(), false);
    m_recorder.drop(order["drop"].toInt());
    if (!order.contains("ssd"))
        return {};
    // What was being written is lost, and its take is free again.
    const QList<Drive::Save> lost = m_drive.insert(mediumOf(order["ssd"].toString()), nowNs);
    for (const Drive::Save &save : lost)
        m_recorder.setLocked(save.take, false);
    return {};
}

void CameraModel::beginUpload(qint64 bodySize)
{
    if (feature("q4fw") != 0)
        m_update.begin(bodySize);
}

Answer CameraModel::updateFirmware(const Request &request)
{
    if (feature("q4fw") == 0)
        return refusal(404, QStringLiteral("no command /q4fw"));
    const FirmwareForm form = readFirmwareForm(request.header("Content-Type"), request.body);
    m_update.end(form, request.body.size(), request.timeNs);
    // The answer tells of the form; whether the file is any good shows in camera/fw_state.
    return form.error.isEmpty() ? jsonAnswer({}) : refusal(400, form.error);
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
    Drive::Save save;
    save.name = expanded(settings["name"].toString(), seq, time) + QStringLiteral(".q4");
    save.bytes = (last - first + 1) * (metaSize + qint64(m_width) * m_height);
    save.take = number;
    save.deletesTake = (mode & autosaveDeletesTake) != 0;
    if (!m_drive.save(save, nowNs))
        return;
    m_recorder.setLocked(number, true);
    if (settings["name"].toString().contains(u"<seq"))
        setValueAt(m_doc, seqPath, qint64(seq + 1));
}

} // namespace q4sim
