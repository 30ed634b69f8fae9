#include "take/frame_geometry.h"

#include "take/playback_vesk_object.h"

FrameGeometry frameGeometry(const PlaybackVeskObject &source)
{
    FrameGeometry geometry;
    const QString res = source.resValue()->variant().toString();
    const QStringList parts = res.split(QLatin1Char('x'), Qt::SkipEmptyParts);
    if (parts.size() == 2) {
        geometry.width = parts[0].toUShort();
        geometry.height = parts[1].toUShort();
    }
    geometry.metaSize = source.metaSizeValue()->variant().toUInt();
    return geometry;
}
