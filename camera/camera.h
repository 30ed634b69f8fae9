#pragma once

#include "camera/camera_value.h"
#include "camera/camera_values.h"
#include "take/vesk_object.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QJsonDocument>
#include <QSet>
#include <QtQmlIntegration>

#include <array>

class QNetworkReply;
class QTimer;

/**
 * One networked camera as a source: its values, the status poll that keeps them current, connecting and
 * disconnecting, and its commands. The camera holds the state; a command is fire and forget and the next poll
 * shows what it did. A failed poll is a log line and nothing more. Lives on the GUI thread.
 */
class Camera : public VeskObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QHostAddress ip READ ip CONSTANT)
    Q_PROPERTY(QString ipString READ ipString CONSTANT)
    Q_PROPERTY(bool connected READ connected NOTIFY connectedChanged)
#define VESK_VALUE_PROPERTY(property, path, altPath, type)                                                   \
    Q_PROPERTY(CameraValue *property READ property##Value CONSTANT)
    VESK_CAMERA_VALUES(VESK_VALUE_PROPERTY)
#undef VESK_VALUE_PROPERTY

public:
    enum FsyncMode { FsyncModeInt = 0, FsyncModeExt = 1, FsyncModeIrig = 2, FsyncModeTrig = 3 };
    Q_ENUM(FsyncMode)
    /** Bits of brefState. */
    enum BrefState { BrefInvalid = 1, BrefInProgress = 2, BrefFull = 4 };
    Q_ENUM(BrefState)
    /** Bits of corrMode. */
    enum CorrMode { CorrModeBrefAdv = 1 };
    Q_ENUM(CorrMode)
    enum LensState { LensRemoved = 0, LensDetect = 1, LensEnable = 2, LensReady = 3, LensFail = 4 };
    Q_ENUM(LensState)
    enum ShtrState { ShtrOpen = 0, ShtrClosed = 1, ShtrFail = 2 };
    Q_ENUM(ShtrState)
    enum SsdState {
        SsdRemoved = 0,
        SsdInsert = 1,
        SsdEnable = 2,
        SsdReady = 3,
        SsdShutdown = 4,
        SsdPowerDown = 5,
        SsdOff = 6,
        SsdFail = 7,
        SsdUnformatted = 8,
        SsdFormat = 9
    };
    Q_ENUM(SsdState)
    enum SsdWrState { SsdWrIdle = 0, SsdWrSave = 1 };
    Q_ENUM(SsdWrState)
    /** Bits of ssdAutosaveMode. */
    enum SsdAutosaveMode {
        SsdAutosaveDisabled = 0,
        SsdAutosaveEnabled = 1,
        SsdAutosaveSelection = 2,
        SsdAutosaveDeleteTake = 4
    };
    Q_ENUM(SsdAutosaveMode)
    /** Bits of featureShtr. */
    enum ShtrFeatures { ShtrFeatHasShtr = 1 };
    Q_ENUM(ShtrFeatures)
    /** Bits of featureLens. */
    enum LensFeatures { LensFeatFstop = 1, LensFeatFocus = 2 };
    Q_ENUM(LensFeatures)

    Camera(const QHostAddress &ip, QObject *parent);

    QHostAddress ip() const { return m_ip; }
    QString ipString() const { return m_ip.toString(); }
    bool connected() const { return m_connected; }

#define VESK_VALUE_ACCESSOR(property, path, altPath, type)                                                   \
    CameraValue *property##Value() const { return m_cameraValues[std::size_t(ValueIndex::property)]; }
    VESK_CAMERA_VALUES(VESK_VALUE_ACCESSOR)
#undef VESK_VALUE_ACCESSOR

    /** Partitions that hold no saved take; 0 means that there is no room to record. */
    Q_INVOKABLE int takesAvailable() const;
    /** Application settings of this camera, kept by its serial number. */
    Q_INVOKABLE QVariant setting(const QString &key, const QVariant &defaultValue) const;
    Q_INVOKABLE QVariant setting(const QString &key) const;
    Q_INVOKABLE void setSetting(const QString &key, const QVariant &value);

    int getFrame(RawFrame *rawFrame) override;

public slots:
    /** Sends the first poll; the camera is connected once it is answered. */
    void connectCamera();
    void disconnectCamera();

    void record();
    void trigger();
    void abort();
    /** Starts a black reference; brefState follows the reply without waiting for the next poll. */
    void bref();
    void deleteAllTakes();
    void partition(int count);
    /** Steps towards far (above 0) or near; 32767 drives to infinity, 0 to the nearest distance. */
    void lensFocus(int step);
    /** Closes the shutter (true) or opens it. */
    void shutterMove(bool pos);
    void ssdUmount();
    void ssdFormat(const QString &name);

signals:
    void connectedChanged();
    void cameraConnected(Camera *camera);
    void cameraConnectFailed(Camera *camera);
    void cameraDisconnected(Camera *camera);
    void valuesPolled();

protected:
    bool framesBlocked() const override { return false; }
    quint64 yearOffset() const override;

private slots:
    void pollCameraValues(bool init = false);
    void pollCameraValuesFinished();
    void brefFinished();

private:
    enum class ValueIndex : std::size_t {
#define VESK_VALUE_INDEX(property, path, altPath, type) property,
        VESK_CAMERA_VALUES(VESK_VALUE_INDEX)
#undef VESK_VALUE_INDEX
            count
    };

    void createValues();
    void setConnected(bool now);
    void startConnected();
    /**
     * Ticks every 33 ms from the connection on. While the camera is not selected a tick has nothing to do, so
     * none is delivered; with the selection they come again in step with those before.
     */
    void armPreview();
    void previewTick();
    void updateTakes(const QJsonObject &document);
    QString settingsKey(const QString &key) const;
    QNetworkReply *postCommand(const QString &path, const QByteArray &body);
    void sendCommand(const QString &path, const QByteArray &body = {});
    bool readReply(QNetworkReply *reply, QJsonDocument *document);

    QHostAddress m_ip;
    bool m_connected = false;
    std::array<CameraValue *, std::size_t(ValueIndex::count)> m_cameraValues{};
    QSet<int> m_savedTakeIds;
    QTimer *m_pollTimer;
    bool m_pollInProgress = false;
    QTimer *m_previewTimer;
    QElapsedTimer m_previewClock; // since the connection
};
