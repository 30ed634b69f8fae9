#include "sim/frame_record.h"

#include "sim/sensor_rules.h"

#include <QDateTime>
#include <QTimeZone>
#include <QtEndian>

namespace q4sim
{

namespace
{

constexpr qint64 nsPerSecond = 1000000000;

quint32 mix(quint64 value)
{
    value = (value ^ value >> 31) * 0x9E3779B97F4A7C15ULL;
    return static_cast<quint32>(value >> 32);
}

} // namespace

qint64 yearStart(qint64 secondsSince1970)
{
    const int year = QDateTime::fromSecsSinceEpoch(secondsSince1970, QTimeZone::UTC).date().year();
    return QDateTime(QDate(year, 1, 1), QTime(0, 0), QTimeZone::UTC).toSecsSinceEpoch();
}

QByteArray metadataBlock(qint64 timeNs, qint64 yearOffset, qint64 frame)
{
    QByteArray block(metaSize, Qt::Uninitialized);
    const auto junk = static_cast<quint64>(frame) * 8;
    for (int i = 0; i < metaSize / 4; ++i)
        qToLittleEndian(mix(junk + static_cast<quint64>(i)), block.data() + 4 * i);
    const qint64 seconds = timeNs / nsPerSecond;
    const auto inYear = static_cast<quint32>(seconds - yearOffset) & 0x1FFFFFFU;
    const auto nanoseconds = static_cast<quint32>(timeNs % nsPerSecond);
    qToLittleEndian((mix(junk) & 0xFE000000U) | inYear, block.data());
    qToLittleEndian((mix(junk + 1) & 0xC0000000U) | nanoseconds, block.data() + 4);
    return block;
}

QByteArray frameRecord(const SceneRenderer &renderer, qint64 frame, qint64 timeNs, qint64 yearOffset)
{
    const SceneParams &params = renderer.params();
    QByteArray record = metadataBlock(timeNs, yearOffset, frame);
    record.resize(metaSize + qsizetype(params.width) * params.height);
    renderer.render(frame, reinterpret_cast<quint8 *>(record.data()) + metaSize);
    return record;
}

} // namespace q4sim
