#include "sim/config.h"

#include "sim/initial_document.h"
#include "sim/sensor_rules.h"

#include <QRegularExpression>

namespace q4sim
{

QStringList allVideoFormats()
{
    return {
        QStringLiteral("1280x720p23.98"), QStringLiteral("1280x720p24"),  QStringLiteral("1280x720p25"),
        QStringLiteral("1280x720p29.97"), QStringLiteral("1280x720p30"),  QStringLiteral("1280x720p50"),
        QStringLiteral("1280x720p59.94"), QStringLiteral("1280x720p60"),  QStringLiteral("1920x1080p23.98"),
        QStringLiteral("1920x1080p24"),   QStringLiteral("1920x1080p25"), QStringLiteral("1920x1080p29.97"),
        QStringLiteral("1920x1080p30")};
}

QList<RecordingOrder> usualRecordings()
{
    const QString res = QStringLiteral("640x480");
    return {{QStringLiteral("drop-test.vesk"),
             1735732800,
             {.first = -2000, .last = 7999, .triggerNs = 1735732000000000000, .res = res}},
            {QStringLiteral("Airbag 07.vesk"),
             1738411200,
             {.first = -500, .last = 4499, .triggerNs = 1738411000000000000, .res = res}},
            {QStringLiteral("wheel.vesk"),
             1740830400,
             {.first = 0, .last = 999, .triggerNs = 1740830000000000000, .res = res}}};
}

Config bareConfig()
{
    Config config;
    config.cfa = CfaMono;
    config.hasLens = config.hasShutter = config.hasSsd = false;
    const QStringList names = featureNames();
    for (const QString &name : names)
        config.features[name] = 0;
    config.videoFormats = QStringList{QStringLiteral("1280x720p30")};
    return config;
}

QStringList defaultResolutions(int cfa)
{
    const QStringList small = {QStringLiteral("640x480"), QStringLiteral("640x240"),
                               QStringLiteral("320x240"), QStringLiteral("320x120")};
    if (cfa != CfaMono)
        return small;
    return QStringList{QStringLiteral("1280x1024"), QStringLiteral("1280x720")} + small;
}

bool parseResolution(const QString &text, int *width, int *height)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{2,4})x(\\d{2,4})$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return false;
    *width = match.captured(1).toInt();
    *height = match.captured(2).toInt();
    const auto good = [](int n) { return n >= 16 && n <= 4096 && n % 2 == 0; };
    return good(*width) && good(*height);
}

QString configError(const Config &config)
{
    if (config.cfa < CfaMono || config.cfa > CfaGBRG)
        return QStringLiteral("the colour pattern must be 0, 1 or 2");
    if (config.partitions < 1 || config.partitions > 1024)
        return QStringLiteral("the partition count must be 1 to 1024");
    if (config.memoryBytes < 1 << 20)
        return QStringLiteral("the memory must hold at least 1 MiB");
    if (!(config.frameRate > 0.0))
        return QStringLiteral("the frame rate must be above 0");
    if (!(config.syncFps >= 0.0) || config.syncFps > clkFreq)
        return QStringLiteral("the sync signal must have 0 to %1 frames per second").arg(clkFreq);
    for (const TakeOrder &order : config.takes) {
        if (const QString text = orderError(order); !text.isEmpty())
            return text;
    }
    for (const RecordingOrder &order : config.recordings) {
        if (const QString text = orderError(order.take); !text.isEmpty())
            return text;
    }
    if (config.driveBytes < 0 || config.driveBytesPerSecond < 1000000)
        return QStringLiteral("the drive must hold 0 bytes or more and write at least 1 MB a second");
    for (auto it = config.features.begin(); it != config.features.end(); ++it) {
        if (!featureNames().contains(it.key()) || it.value() < -1)
            return QStringLiteral("\"%1\" = %2 is no feature").arg(it.key()).arg(it.value());
    }
    for (const QString &res : config.resolutions) {
        int width = 0;
        int height = 0;
        if (!parseResolution(res, &width, &height))
            return QStringLiteral("\"%1\" is no resolution").arg(res);
        if (config.cfa != CfaMono && (width > 640 || height > 480))
            return QStringLiteral("a colour camera has at most 640x480, not %1").arg(res);
        if (frClksMin(width, height) > frClksMax)
            return QStringLiteral("the sensor is too slow for %1").arg(res);
    }
    return {};
}

} // namespace q4sim
