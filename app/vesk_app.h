#pragma once

#include "app/qml_object_list_model.h"
#include "take/vesk_object.h"

#include <QGuiApplication>
#include <QHostAddress>
#include <QList>
#include <QNetworkRequest>
#include <QUrl>
#include <QVariant>
#include <QtQmlIntegration>

class Camera;
class ImgAdjUtil;
class QNetworkAccessManager;
class QNetworkReply;
class QSettings;
class QTimer;
class QUdpSocket;
class SaveManager;

Q_MOC_INCLUDE("camera/camera.h")
Q_MOC_INCLUDE("image/img_adj_util.h")
Q_MOC_INCLUDE("save/save_manager.h")
Q_MOC_INCLUDE(<QNetworkAccessManager>)

/**
 * The one application object: settings, the network manager of all camera traffic, the list of open sources,
 * the selected source and camera discovery. Lives on the GUI thread.
 */
class VeskApp : public QGuiApplication
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QNetworkAccessManager *networkAccessManager READ networkAccessManager WRITE
                   set_networkAccessManager NOTIFY networkAccessManagerChanged)
    Q_PROPERTY(QQmlObjectListModelBase *veskObjModel READ veskObjModel CONSTANT)
    Q_PROPERTY(VeskObject *selectedVeskObject READ selectedVeskObject WRITE setSelectedVeskObject NOTIFY
                   selectedVeskObjectChanged)
    Q_PROPERTY(BackgroundView backgroundView READ backgroundView NOTIFY backgroundViewChanged)
    Q_PROPERTY(SaveManager *saveManager READ saveManager CONSTANT)
    Q_PROPERTY(ImgAdjUtil *imgAdjUtil READ imgAdjUtil CONSTANT)

public:
    /** What the window shows while no source is selected. */
    enum BackgroundView { Empty = 0, SaveProgress = 1 };
    Q_ENUM(BackgroundView)

    VeskApp(int &argc, char **argv, const QString &applicationName, const QString &version,
            const QString &organizationDomain, const QString &organizationName);
    ~VeskApp() override;

    /** The running application. */
    static VeskApp *instance();

    QNetworkAccessManager *networkAccessManager() const { return m_networkAccessManager; }
    QQmlObjectListModelBase *veskObjModel() const { return m_veskObjModel; }
    const QList<VeskObject *> &veskObjects() const { return m_veskObjModel->items(); }
    VeskObject *selectedVeskObject() const { return m_selectedVeskObject; }
    BackgroundView backgroundView() const { return m_backgroundView; }
    SaveManager *saveManager() const { return m_saveManager; }
    ImgAdjUtil *imgAdjUtil() const { return m_imgAdjUtil; }
    QSettings *settings() const { return m_settings; }

    /** Selects a source; null and the source that is selected already change nothing. */
    void setSelectedVeskObject(VeskObject *veskObj);

    /**
     * URL of a path on a camera: plain HTTP on the default port, IPv6 addresses in brackets. path begins with
     * "/" or is empty. Empty for an address of any other kind.
     */
    static QUrl urlForAddress(const QHostAddress &address, const QString &path);

    enum RequestBody { NoBody, JsonBody };
    /** A request to a camera with the headers that every one carries. */
    static QNetworkRequest cameraRequest(const QHostAddress &address, const QString &path, RequestBody body);
    /** Ends a camera's reply with an error once it holds more bytes than a status document or a frame can. */
    static void limitReply(QNetworkReply *reply);

public slots:
    bool set_networkAccessManager(QNetworkAccessManager *manager);

    QVariant setting(const QString &key, const QVariant &defaultValue) const;
    QVariant setting(const QString &key) const;
    void setSetting(const QString &key, const QVariant &value);

    QString fileNameFromPath(const QString &filePath) const;
    QString baseNameFromPath(const QString &filePath) const;
    QString filePathFromUrl(const QString &fileUrl) const;
    QUrl fileUrlFromPath(const QString &filePath) const;
    /** Current UTC time in ISO form without ":", for use in file names. */
    QString currentDateTime() const;
    /** Free bytes on the volume that holds the folder, 0 if there is none. */
    qlonglong folderBytesAvailable(const QString &folderPath) const;

    /** Starts a discovery burst of three seconds, unless one runs. */
    void startBroadcast();
    void stopBroadcast();
    void connectCamera(const QHostAddress &ip);
    void connectCamera(const QString &ip);
    /** Adds a camera that never connects. */
    void connectVirtualCamera();
    void openVeskFile(const QString &fileUrl);
    void setNullVeskObject();
    void setNullVeskObject(VeskApp::BackgroundView view);

signals:
    void networkAccessManagerChanged(QNetworkAccessManager *manager);
    void selectedVeskObjectChanged();
    void backgroundViewChanged();

private slots:
    void sendBroadcast();
    void recvBroadcastReply();
    void connectCameraFinished(Camera *camera);
    void removeVeskObject(VeskObject *veskObj);
    /** The selected source was destroyed; nothing of it may be touched any more. */
    void forgetSelected();

private:
    /** One usable interface address, while a burst runs. */
    struct BroadcastEntry {
        QHostAddress ip;
        QHostAddress broadcast;
        QUdpSocket *socket;
    };

    void initSettings();
    void buildBroadcastEntries();
    void addBroadcastEntry(const QHostAddress &ip, const QHostAddress &broadcast);
    bool hasCamera(const QHostAddress &ip) const;
    void appendCamera(Camera *camera);
    void setBackgroundView(BackgroundView view);

    QNetworkAccessManager *m_networkAccessManager = nullptr;
    QQmlObjectListModel<VeskObject> *m_veskObjModel = nullptr;
    BackgroundView m_backgroundView = Empty;
    SaveManager *m_saveManager = nullptr;
    QSettings *m_settings = nullptr;
    QList<BroadcastEntry> m_broadcastEntries;
    QTimer *m_broadcastTimer = nullptr;
    bool m_broadcasting = false;
    int m_broadcastTicks = 0;
    VeskObject *m_selectedVeskObject = nullptr;
    ImgAdjUtil *m_imgAdjUtil = nullptr;
};
