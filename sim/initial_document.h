#pragma once

#include "sim/config.h"

#include <QJsonObject>

namespace q4sim
{

/// Status document of a camera that has just been switched on, without what moves by itself: state of the
/// recording, black reference, lens, shutter, drive and time.
QJsonObject initialDocument(const Config &config);

/// Colour-independent names of the signals that a line may carry, the empty one (disabled) among them.
bool lineAllowsSignal(const QString &line, const QString &signal);

/// Keys of "features" that a camera may have.
QStringList featureNames();

} // namespace q4sim
