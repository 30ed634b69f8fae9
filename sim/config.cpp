#include "sim/config.h"

#include "sim/sensor_rules.h"

#include <QRegularExpression>

namespace q4sim
{

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
