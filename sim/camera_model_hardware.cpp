#include "sim/camera_model.h"

#include "sim/sensor_rules.h"

#include <algorithm>
#include <array>

// What happens to a camera by hand, by upload and by itself.
namespace q4sim
{

namespace
{

struct Deed {
    const char *thing;
    const char *deed;
};
constexpr std::array deeds = {
    Deed{"lens", "mount"},       Deed{"lens", "remove"},       Deed{"lens", "fail"},
    Deed{"shutter", "work"},     Deed{"shutter", "fail"},      Deed{"ssd", "insert"},
    Deed{"ssd", "insert-blank"}, Deed{"ssd", "insert-broken"}, Deed{"ssd", "remove"},
    Deed{"ssd", "fail"},         Deed{"ssd", "full"}};

// What is wrong with one entry of an order; empty if nothing.
QString senseless(const QString &thing, const QJsonValue &deed, const Recorder &recorder, const Drive &drive)
{
    if (thing == u"af_switch" && deed.isDouble())
        return {};
    if (thing == u"sync_fps" && deed.isDouble() && deed.toDouble() >= 0.0 && deed.toDouble() <= clkFreq)
        return {};
    if (thing == u"lock" || thing == u"unlock" || thing == u"drop")
        return recorder.savedTakes().contains(deed.toInt()) ? QString() : QStringLiteral("no such take");
    if (thing == u"ssd_close")
        return drive.openTake(deed.toInt()) ? QString() : QStringLiteral("no such recording");
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

} // namespace

QString CameraModel::operate(const QJsonObject &order, qint64 nowNs)
{
    advance(nowNs);
    for (auto it = order.begin(); it != order.end(); ++it) {
        if (const QString error = senseless(it.key(), it.value(), m_recorder, m_drive); !error.isEmpty())
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
    m_drive.close(order["ssd_close"].toInt());
    const QString ssd = order["ssd"].toString();
    if (ssd == u"full")
        m_drive.fill();
    else if (ssd == u"fail")
        unlock(m_drive.fail());
    else if (!ssd.isEmpty())
        unlock(m_drive.insert(mediumOf(ssd), nowNs));
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

} // namespace q4sim
