#pragma once

#include "sim/scene.h"

#include <QJsonObject>
#include <QString>

#include <memory>
#include <optional>

namespace q4sim
{

/// What a take keeps of the moment of its trigger. Later settings of the camera change nothing of it; only a
/// write to the take's own path does.
struct Footage {
    SceneParams scene;
    double frRate = 1000.0;  ///< frames per second, for all of the take's frames
    qint64 triggerNs = 0;    ///< start of frame 0 by the camera's own clock, since 1970
    qint64 firstFrame = 0;   ///< of the take, which alone decides on the year offset
    QJsonObject description; ///< "acq", "camera", "lens" and "adjust" of the take's description

    /// Start of a frame, ns since 1970.
    qint64 timeNs(qint64 frame) const;
    /// Start of the year of the first frame, in seconds since 1970: no frame is before it.
    qint64 yearOffset() const;
    /// The scene as it is served: the correction of the black reference takes most of the noise away.
    SceneParams correctedScene() const;
};

/// A take that a test wants to have without recording it.
struct TakeOrder {
    int take = 0;           ///< its partition, which must be free; 0: the first free one
    qint64 first = -100;    ///< number of its first frame; frames before the trigger are negative
    qint64 last = 99;       ///< number of its last frame; as long as all times are in the years 1970 to 2199
    double frameRate = 0.0; ///< 0.1 to 100000000 frames per second; 0: that of the camera
    qint64 triggerNs = 0;   ///< time of frame 0, ns since 1970; 0: so that the last frame ends now
    QString res = {};       ///< "WxH", even numbers of 16 to 4096; empty: that of the camera
    Look look = Look::Moving;
    int code = 64;                         ///< of a plain picture's pixels, 0 to 255
    std::vector<PixelChange> changes = {}; ///< inside of the picture
    bool locked = false;

    bool operator==(const TakeOrder &) const = default;
};

/// A recording that lies on the drive when it is inserted. Its frames are those of `take`, whose partition
/// and lock say nothing here.
struct RecordingOrder {
    QString name;
    qint64 time = 0; ///< when it was written, seconds since 1970
    TakeOrder take = {};

    bool operator==(const RecordingOrder &) const = default;
};

/// What is wrong with an order whatever the camera, in one sentence; empty if nothing.
QString orderError(const TakeOrder &order);

/// Reads {"take", "first", "last", "rate", "trigger_ns", "res", "scene", "code", "changes", "locked"}, each
/// of which may be missing. "scene" is "moving", "still" or "plain"; "changes" is an array of objects with
/// "frame", "to" (missing: that frame alone), "x", "y" and "add". Sets `error` when it returns none.
std::optional<TakeOrder> readTakeOrder(const QJsonObject &json, QString *error);

/// Reads {"name", "time"} and the keys of a take order. Sets `error` when it returns none.
std::optional<RecordingOrder> readRecordingOrder(const QJsonObject &json, QString *error);

} // namespace q4sim
