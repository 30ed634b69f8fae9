#pragma once

#include "camera/camera_value.h"
#include "camera/camera_values.h"
#include "take/vesk_object.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QJsonDocument>
#include <QtQmlIntegration>

#include <array>

class QJsonArray;
class QNetworkReply;
class QQmlObjectListModelBase;
class QStringListModel;
class QTimer;
class SaveJobQueue;
class SavedTakeModel;
class SsdLsEntry;
class SsdLsListModel;
class SsdLsSortProxyModel;
class Take;
struct SettingEntries;

Q_MOC_INCLUDE("save/save_job_queue.h")
Q_MOC_INCLUDE("take/saved_take_model.h")
Q_MOC_INCLUDE("take/ssd_ls_sort_proxy_model.h")
Q_MOC_INCLUDE("take/take.h")

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
    Q_PROPERTY(QQmlObjectListModelBase *ios READ ios CONSTANT)
    Q_PROPERTY(QQmlObjectListModelBase *takes READ takes CONSTANT)
    Q_PROPERTY(QQmlObjectListModelBase *ssdTakes READ ssdTakes CONSTANT)
    Q_PROPERTY(Take *activeTake READ activeTake NOTIFY activeTakeChanged)
    Q_PROPERTY(SavedTakeModel *savedTakes READ savedTakes NOTIFY savedTakesChanged)
    Q_PROPERTY(QStringListModel *resList READ resList NOTIFY resListChanged)
    Q_PROPERTY(int resIndex READ resIndex NOTIFY resIndexChanged)
    Q_PROPERTY(QStringListModel *frRateList READ frRateList NOTIFY frRateListChanged)
    Q_PROPERTY(int frRateListIndex READ frRateListIndex NOTIFY frRateListIndexChanged)
    Q_PROPERTY(QStringListModel *expList READ expList NOTIFY expListChanged)
    Q_PROPERTY(int expListIndex READ expListIndex NOTIFY expListIndexChanged)
    Q_PROPERTY(QStringListModel *trigOffsetList READ trigOffsetList NOTIFY trigOffsetListChanged)
    Q_PROPERTY(int trigOffsetListIndex READ trigOffsetListIndex NOTIFY trigOffsetListIndexChanged)
    Q_PROPERTY(QStringListModel *vidFormatList READ vidFormatList NOTIFY vidFormatListChanged)
    Q_PROPERTY(int vidFormatIndex READ vidFormatIndex NOTIFY vidFormatIndexChanged)
    Q_PROPERTY(QStringListModel *fstopList READ fstopList NOTIFY fstopListChanged)
    Q_PROPERTY(int fstopIndex READ fstopIndex NOTIFY fstopIndexChanged)
    Q_PROPERTY(SsdLsSortProxyModel *ssdLsEntries READ ssdLsEntries CONSTANT)
    Q_PROPERTY(SaveJobQueue *fileSaveJobQueue READ fileSaveJobQueue CONSTANT)
    Q_PROPERTY(SaveJobQueue *ssdSaveJobQueue READ ssdSaveJobQueue CONSTANT)
    Q_PROPERTY(double fwUpdateProgress READ fwUpdateProgress NOTIFY fwUpdateProgressChanged)
    Q_PROPERTY(QString fwUpdateStatus READ fwUpdateStatus NOTIFY fwUpdateStatusChanged)

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

    /** The seven electrical lines, as CameraIO. */
    QQmlObjectListModelBase *ios() const { return m_ios; }
    /** One Take for each partition, numbered from 1; all are replaced when the number of partitions changes.
     */
    QQmlObjectListModelBase *takes() const { return m_takes; }
    /** The recordings on the drive that were opened, as SsdTake. */
    QQmlObjectListModelBase *ssdTakes() const { return m_ssdTakes; }
    /** The partition that records now, or null. */
    Take *activeTake() const { return m_activeTake; }
    /** The takes that hold a recording. */
    SavedTakeModel *savedTakes() const { return m_savedTakes; }

    // The menus of settings, each with the place of the current one in it or -1.
    QStringListModel *resList() const { return m_resList.model; }
    int resIndex() const { return m_resList.index; }
    QStringListModel *frRateList() const { return m_frRateList.model; }
    int frRateListIndex() const { return m_frRateList.index; }
    QStringListModel *expList() const { return m_expList.model; }
    int expListIndex() const { return m_expList.index; }
    QStringListModel *trigOffsetList() const { return m_trigOffsetList.model; }
    int trigOffsetListIndex() const { return m_trigOffsetList.index; }
    QStringListModel *vidFormatList() const { return m_vidFormatList.model; }
    int vidFormatIndex() const { return m_vidFormatList.index; }
    QStringListModel *fstopList() const { return m_fstopList.model; }
    int fstopIndex() const { return m_fstopList.index; }

    /** The saves of this camera's takes into files. While one runs it has the link to itself. */
    SaveJobQueue *fileSaveJobQueue() const { return m_fileSaveJobQueue; }
    /** The saves of this camera's takes onto its drive, which the camera does by itself. */
    SaveJobQueue *ssdSaveJobQueue() const { return m_ssdSaveJobQueue; }
    /** What the drive holds as of the last ssdLs(), sorted; the source model tells what is selected. */
    SsdLsSortProxyModel *ssdLsEntries() const { return m_ssdLsEntries; }

    /** Percent of the upload; 0 while none runs, and a little above 0 before its first report. */
    double fwUpdateProgress() const { return m_fwUpdateProgress; }
    QString fwUpdateStatus() const { return m_fwUpdateStatus; }

    /** Partitions that hold no saved take; 0 means that there is no room to record. */
    Q_INVOKABLE int takesAvailable() const;
    /** Application settings of this camera, kept by its serial number. */
    Q_INVOKABLE QVariant setting(const QString &key, const QVariant &defaultValue) const;
    Q_INVOKABLE QVariant setting(const QString &key) const;
    Q_INVOKABLE void setSetting(const QString &key, const QVariant &value);

    int getFrame(RawFrame *rawFrame) override;

    /** Sends a command with its JSON body; the caller sees to the end of the reply, whose size is limited. */
    QNetworkReply *postCommand(const QString &path, const QByteArray &body);

    /**
     * What a drive tells of its recordings: objects, or names alone from older firmware. Anything else is no
     * entry and takes no number.
     */
    static QList<SsdLsEntry *> ssdLsEntries(const QJsonArray &elements, QObject *parent);

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
    /** Asks for the recordings on the drive, with which the list is filled anew. */
    void ssdLs();
    /** Opens the first selected recording of the list, if there is one. */
    void ssdFOpen();
    /** Opens a recording on the drive as a source and selects it. */
    void ssdFOpen(const QString &name);
    void ssdUmount();
    void ssdFormat(const QString &name);
    /** Sends a firmware file; the camera installs it by itself and tells by fwState how it went. */
    void fwUpdate(const QString &fileUrl);

signals:
    void connectedChanged();
    void cameraConnected(Camera *camera);
    void cameraConnectFailed(Camera *camera);
    void cameraDisconnected(Camera *camera);
    void valuesPolled();
    void activeTakeChanged();
    /** Declared for views; the model stays the same for the camera's life. */
    void savedTakesChanged();
    void resListChanged();
    void resIndexChanged();
    void frRateListChanged();
    void frRateListIndexChanged();
    void expListChanged();
    void expListIndexChanged();
    void trigOffsetListChanged();
    void trigOffsetListIndexChanged();
    void vidFormatListChanged();
    void vidFormatIndexChanged();
    void fstopListChanged();
    void fstopIndexChanged();
    void fwUpdateProgressChanged();
    void fwUpdateStatusChanged();

protected:
    bool framesBlocked() const override;
    quint64 yearOffset() const override;

private slots:
    void pollCameraValues(bool init = false);
    void pollCameraValuesFinished();
    void resetSavedTakeFilter();
    void brefFinished();
    void ssdLsFinished();
    void ssdFOpenFinished();
    void fwUpdateFinished();

private:
    /** A menu of settings and the place of the current one. */
    struct SettingList {
        QStringListModel *model = nullptr;
        int index = -1;
    };

    enum class ValueIndex : std::size_t {
#define VESK_VALUE_INDEX(property, path, altPath, type) property,
        VESK_CAMERA_VALUES(VESK_VALUE_INDEX)
#undef VESK_VALUE_INDEX
            count
    };

    void createValues();
    void createLines();
    void createTakes();
    void createDrive();
    void createLists();
    void wireLists();
    void showEntries(SettingList &list, const SettingEntries &entries, void (Camera::*listChanged)(),
                     void (Camera::*indexChanged)());
    void moveIndex(SettingList &list, const QString &current, void (Camera::*indexChanged)());
    void updateExpList();
    void updateFrRateList();
    void setFrRateListExt();
    void updateTrigOffsetList();
    void updateResList(const QJsonObject &document);
    void updateResIndex();
    void updateVidFormatList(const QJsonObject &document);
    void updateVidFormatIndex();
    void updateFstopList();
    void updateFstopIndex();
    void createFirmwareUpdate();
    void setFwUpdateProgress(double percent);
    void updateFwStatus();
    QString fwStatusText();
    /** The document is that of the poll that made the connection. */
    void setConnected(bool now, const QJsonObject &document = {});
    void startConnected(const QJsonObject &document);
    /**
     * Ticks every 33 ms from the connection on. While the camera is not selected a tick has nothing to do, so
     * none is delivered; with the selection they come again in step with those before.
     */
    void armPreview();
    void previewTick();
    /** Brings the takes up to what the status says; init is true for the poll that makes the connection. */
    void updateTakes(const QJsonObject &document, bool init);
    int partitions() const;
    void replaceTakes(int count);
    /** Those of a list, before they go. */
    static void unselectTakes(const QQmlObjectListModelBase &takes);
    /** Takes out what the status does not list as open any more. */
    void updateSsdTakes(const QJsonObject &document, bool init);
    /** A status that is asked for from now on knows of all recordings that are open. */
    void expectSsdTakes();
    QString settingsKey(const QString &key) const;
    void sendCommand(const QString &path, const QByteArray &body = {});
    bool readReply(QNetworkReply *reply, QJsonDocument *document);

    QHostAddress m_ip;
    bool m_connected = false;
    std::array<CameraValue *, std::size_t(ValueIndex::count)> m_cameraValues{};
    QTimer *m_pollTimer;
    bool m_pollInProgress = false;
    QTimer *m_previewTimer;
    QElapsedTimer m_previewClock; // since the connection
    QQmlObjectListModelBase *m_ios = nullptr;
    QQmlObjectListModelBase *m_takes;
    QQmlObjectListModelBase *m_ssdTakes;
    SavedTakeModel *m_savedTakes;
    Take *m_activeTake = nullptr;
    SettingList m_resList;
    SettingList m_frRateList;
    SettingList m_expList;
    SettingList m_trigOffsetList;
    SettingList m_vidFormatList;
    SettingList m_fstopList;
    SsdLsListModel *m_ssdLsList;
    SsdLsSortProxyModel *m_ssdLsEntries;
    SaveJobQueue *m_fileSaveJobQueue;
    SaveJobQueue *m_ssdSaveJobQueue;
    double m_fwUpdateProgress = 0.0;
    QString m_fwUpdateStatus;
    /** The upload has ended and the camera is thought to be finishing. */
    bool m_fwFinalizing = false;
    QTimer *m_fwFinalizeTimer;
};
