#pragma once

#include "sim/scene.h"

#include <QByteArray>

namespace q4sim
{

/// Start of the UTC year of a time, in seconds since 1970.
qint64 yearStart(qint64 secondsSince1970);

/// The metaSize bytes in front of a frame's pixels, little-endian: seconds since the year offset (bits 0 to
/// 24 of the first word, so that they begin anew after 388 days), nanoseconds (bits 0 to 29 of the second).
/// The other bits and bytes are noise, as a reader has to leave them alone.
QByteArray metadataBlock(qint64 timeNs, qint64 yearOffset, qint64 frame);

/// Metadata block and pixels of one frame. `timeNs` counts from 1970 by the camera's own clock, yearOffset
/// is in seconds.
QByteArray frameRecord(const SceneRenderer &renderer, qint64 frame, qint64 timeNs, qint64 yearOffset);

} // namespace q4sim
