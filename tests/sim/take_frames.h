#pragma once

#include "sim/scene.h"

#include <QByteArray>
#include <QtEndian>

#include <optional>

/// Body of a transfer of frames `start` to `start` + `cnt` - 1 of a take.
inline QByteArray transferOf(int take, qint64 start, qint64 cnt)
{
    return R"({"type":3,"src":0,"take":)" + QByteArray::number(take) +
           ",\"start\":" + QByteArray::number(start) + ",\"cnt\":" + QByteArray::number(cnt) + '}';
}

/// The frame number in the picture of a record of 32 bytes and `width` pixels a row.
inline std::optional<qint32> shownNumber(const QByteArray &record, int width)
{
    if (record.size() < 32 + 17 * width)
        return std::nullopt;
    return q4sim::readStrip([&](int x, int y) { return double(quint8(record[32 + y * width + x])); });
}

/// Seconds and nanoseconds of a record's metadata.
inline std::pair<quint32, quint32> frameTime(const QByteArray &record)
{
    if (record.size() < 8)
        return {};
    return {qFromLittleEndian<quint32>(record.constData()) & 0x1FFFFFF,
            qFromLittleEndian<quint32>(record.constData() + 4) & 0x3FFFFFFF};
}
