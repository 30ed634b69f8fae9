#pragma once

#include "sim/config.h"
#include "sim/devices.h"
#include "sim/drive.h"
#include "sim/firmware_update.h"
#include "sim/footage.h"
#include "sim/lens.h"
#include "sim/recorder.h"
#include "sim/request.h"
#include "sim/scene.h"

#include <QJsonObject>

#include <map>
#include <memory>
#include <optional>

namespace q4sim
{

/// What a camera is and does, without the network: answers requests as of the time they carry. Not safe
/// from several threads at once.
class CameraModel
{
public:
    explicit CameraModel(const Config &config);

    /// Answers one request. Everything that happened until its time is carried out first.
    Answer handle(const Request &request);

    QJsonObject status(qint64 nowNs);

    /// Shows `value` at a path of the status document whatever the camera does; Undefined ends that.
    void forceValue(const QString &path, const QJsonValue &value);

    void setTakeLocked(int number, bool locked) { m_recorder.setLocked(number, locked); }

    /// Makes a take at once. Sets `error` to one sentence when it returns 0 instead of the take's number.
    int makeTake(const TakeOrder &order, qint64 nowNs, QString *error);
    void dropTake(int number) { m_recorder.drop(number); } ///< locked or not
    /// What a partition's path shows; empty for a number that is none.
    QJsonObject takeDescription(int number, qint64 nowNs);
    /// Of a saved take; null for other numbers.
    std::shared_ptr<const Footage> footage(int number) const;
    /// What the path of an opened recording shows; empty for a number that is none.
    QJsonObject openTakeDescription(int number, qint64 nowNs);
    /// Of an opened recording; null for other numbers.
    std::shared_ptr<const Footage> openFootage(int number) const;
    /// What is wrong with the takes that the camera was to start with; empty if nothing.
    QString startError() const { return m_startError; }

    QString operate(const QJsonObject &order, qint64 nowNs); ///< see Camera::operate()

    // A firmware upload on its way in; its request ends it.
    void beginUpload(qint64 bodySize);
    void continueUpload(qint64 received) { m_update.receive(received); }
    QJsonObject upload() const { return m_update.report(); }

    SceneParams sceneParams() const;
    qint64 liveFrame(qint64 nowNs) const { return m_frameClock.frameAt(nowNs); }

    /// Time of a frame by the camera's own clock, which a write of meta/time sets; ns since 1970.
    qint64 frameTimeNs(qint64 frame) const { return m_frameClock.timeNs(frame) + m_timeOffsetNs; }

private:
    using Command = Answer (CameraModel::*)(const QJsonObject &arguments, qint64 nowNs);
    using Setter = Answer (CameraModel::*)(const QString &path, const QJsonValue &value, qint64 nowNs);

    void advance(qint64 nowNs);
    QJsonObject acquisition(qint64 nowNs) const;
    QJsonObject takeCounts(int number, qint64 nowNs) const;
    QJsonObject surroundings(qint64 nowNs) const; ///< what a recording of this moment tells beside its frames
    std::shared_ptr<Footage> footageNow(qint64 nowNs) const;
    std::shared_ptr<Footage> footageFor(const TakeOrder &order, qint64 nowNs) const;
    /// Sets `error` to what is wrong with an order that is sound by itself; empty if nothing.
    std::shared_ptr<Footage> orderedFootage(const TakeOrder &order, qint64 nowNs, QString *error) const;
    QString placeInTime(const TakeOrder &order, qint64 nowNs, Footage *footage) const;
    Answer takeAnswer(const QString &path, qint64 nowNs);
    QJsonObject drive(qint64 nowNs) const;
    static QJsonObject framesOf(qint64 first, qint64 last);
    /// Size of the metadata, and of a recording the year that its frames count from.
    void tellRecord(const Footage *recorded, QJsonObject *take) const;
    QList<Drive::Recording> initialRecordings();
    Drive::Save saveOf(int number, qint64 first, qint64 last) const;
    bool startSave(const Drive::Save &save, qint64 nowNs);
    void unlock(const QList<Drive::Save> &saves); ///< takes whose saves are over
    int feature(const char *name) const;          ///< 0 when it is missing
    bool synced() const;                          ///< frames follow the signal at the sync input
    int runningFrClks() const; ///< frame length, by the camera's own clock or by that signal
    void setSyncFps(double fps, qint64 nowNs);
    void retime(qint64 nowNs);
    void autosave(int number, qint64 nowNs);
    void setResolution(const QString &res, qint64 nowNs);
    void setFrClks(qint64 wanted, qint64 nowNs);
    void updatePartitions(qint64 nowNs);

    // Writes.
    Answer put(const QString &path, const QByteArray &body, qint64 nowNs);
    static Setter setterFor(const QString &path);
    Answer putPlain(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putExposure(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putFrClks(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putResolution(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putTrigOffset(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putPartitions(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putAcqMode(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putFsyncMode(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putCorrMode(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putAutosave(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putFstop(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putOfTake(int number, const QString &path, const QByteArray &body, qint64 nowNs);
    Answer putOfOpenTake(int number, const QString &path, const QByteArray &body, qint64 nowNs);
    Answer putTime(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putVideoFormat(const QString &path, const QJsonValue &value, qint64 nowNs);
    Answer putLine(const QString &path, const QJsonValue &value, qint64 nowNs);

    // Commands.
    Answer post(const QString &path, const QByteArray &body, qint64 nowNs);
    Answer record(const QJsonObject &arguments, qint64 nowNs);
    Answer trigger(const QJsonObject &arguments, qint64 nowNs);
    Answer abort(const QJsonObject &arguments, qint64 nowNs);
    Answer blackReference(const QJsonObject &arguments, qint64 nowNs);
    Answer deleteTakes(const QJsonObject &arguments, qint64 nowNs);
    Answer partition(const QJsonObject &arguments, qint64 nowNs);
    Answer focus(const QJsonObject &arguments, qint64 nowNs);
    Answer moveShutter(const QJsonObject &arguments, qint64 nowNs);
    Answer ssdList(const QJsonObject &arguments, qint64 nowNs);
    Answer ssdUmount(const QJsonObject &arguments, qint64 nowNs);
    Answer ssdFormat(const QJsonObject &arguments, qint64 nowNs);
    Answer ssdOpen(const QJsonObject &arguments, qint64 nowNs);
    Answer ssdClose(const QJsonObject &arguments, qint64 nowNs);
    Answer ssdSave(const QJsonObject &arguments, qint64 nowNs);
    Answer transfer(const QJsonObject &arguments, qint64 nowNs);
    Answer transferTake(const QJsonObject &arguments);
    Answer transferOpenTake(const QJsonObject &arguments);
    /// A take's frames, or those of a recording, which has `first` to `last`.
    Answer run(const std::shared_ptr<const Footage> &footage, qint64 first, qint64 last,
               const QJsonObject &arguments);
    std::shared_ptr<const SceneRenderer> rendererFor(const SceneParams &params);
    Answer frameHeaders(const SceneParams &params) const; ///< an answer that has no body yet
    Answer updateFirmware(const Request &request);

    Config m_config;
    QJsonObject m_doc; ///< the values that nothing but a write changes
    std::map<QString, QJsonValue> m_forced;
    int m_width = 0;
    int m_height = 0;
    int m_frClks;
    int m_expClks = expClksMin;
    int m_trigOffset;
    qint64 m_timeOffsetNs = 0;
    int m_fsyncMode = 0;
    double m_syncFps;
    FrameClock m_frameClock;
    Recorder m_recorder;
    BlackReference m_blackReference;
    Lens m_lens;
    Shutter m_shutter;
    Drive m_drive;
    FirmwareUpdate m_update;
    QList<std::shared_ptr<const SceneRenderer>> m_renderers; ///< used last, the newest first
    QString m_startError;
};

/// A refusal: an HTTP status and a sentence.
Answer refusal(int status, const QString &text);

/// A JSON document as answer.
Answer jsonAnswer(const QJsonObject &object);

/// A whole number of a request's arguments; none when it is missing, no number or beyond what JSON can hold.
std::optional<qint64> wholeNumber(const QJsonValue &value);

} // namespace q4sim
