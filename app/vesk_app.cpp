#include "app/vesk_app.h"

#include "app/json_settings.h"
#include "app/log.h"
#include "image/img_adj_util.h"
#include "save/save_manager.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QSettings>
#include <QStorageInfo>
#include <QTimer>

/** Twice the largest frame. A reply without end would otherwise take all memory. */
static constexpr qint64 MaxReplyBytes = 32 * 1024 * 1024;

VeskApp::VeskApp(int &argc, char **argv, const QString &applicationName, const QString &version,
                 const QString &organizationDomain, const QString &organizationName)
    : QGuiApplication(argc, argv)
{
    setApplicationName(applicationName);
    setApplicationVersion(version);
    setOrganizationDomain(organizationDomain);
    setOrganizationName(organizationName);
    QDir().mkpath(appDataFolder());
    // A camera stands on the local network: a proxy for the world outside would not find it, and to ask the
    // machine for one can hold the window up.
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    initSettings();
    initLog(*m_settings);

    m_veskObjModel = new QQmlObjectListModel<VeskObject>(this);
    m_saveManager = new SaveManager(this);
    m_imgAdjUtil = new ImgAdjUtil(this);
    m_broadcastTimer = new QTimer(this);
    connect(m_broadcastTimer, &QTimer::timeout, this, &VeskApp::sendBroadcast);

    if (argc > 1)
        openVeskFile(QStringLiteral("file:") + QFile::decodeName(argv[1]));
    startBroadcast();
}

/** The saves end first: their threads need what the application has. */
VeskApp::~VeskApp()
{
    delete std::exchange(m_saveManager, nullptr);
}

void VeskApp::initSettings()
{
    m_settings = new QSettings(jsonSettingsFormat(), QSettings::UserScope, organizationName(),
                               applicationName(), this);
    if (m_settings->status() == QSettings::FormatError) {
        // The first write replaces the file; what the user had typed into it is kept beside it.
        const QString copy = m_settings->fileName() + QStringLiteral(".bad");
        QFile::remove(copy);
        QFile::copy(m_settings->fileName(), copy);
        qWarning().noquote() << "settings file is not JSON, kept as" << copy;
    }
    m_settings->setValue(QStringLiteral("vesk/version"), applicationVersion());
}

VeskApp *VeskApp::instance()
{
    return static_cast<VeskApp *>(QCoreApplication::instance());
}

bool VeskApp::set_networkAccessManager(QNetworkAccessManager *manager)
{
    if (manager == m_networkAccessManager)
        return false;
    m_networkAccessManager = manager;
    emit networkAccessManagerChanged(manager);
    return true;
}

QVariant VeskApp::setting(const QString &key, const QVariant &defaultValue) const
{
    return m_settings->value(key, defaultValue);
}

QVariant VeskApp::setting(const QString &key) const
{
    return m_settings->value(key);
}

void VeskApp::setSetting(const QString &key, const QVariant &value)
{
    m_settings->setValue(key, value);
}

QString VeskApp::fileNameFromPath(const QString &filePath) const
{
    return QFileInfo(filePath).fileName();
}

QString VeskApp::baseNameFromPath(const QString &filePath) const
{
    return QFileInfo(filePath).completeBaseName();
}

QString VeskApp::filePathFromUrl(const QString &fileUrl) const
{
    return QUrl(fileUrl).toLocalFile();
}

QUrl VeskApp::fileUrlFromPath(const QString &filePath) const
{
    return QUrl::fromLocalFile(filePath);
}

QString VeskApp::currentDateTime() const
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate).remove(QLatin1Char(':'));
}

qlonglong VeskApp::folderBytesAvailable(const QString &folderPath) const
{
    const QStorageInfo storage(folderPath);
    return storage.isValid() && storage.isReady() ? storage.bytesAvailable() : 0;
}

QUrl VeskApp::urlForAddress(const QHostAddress &address, const QString &path)
{
    switch (address.protocol()) {
    case QAbstractSocket::IPv4Protocol:
        return QUrl(QStringLiteral("http://") + address.toString() + path);
    case QAbstractSocket::IPv6Protocol:
        return QUrl(QStringLiteral("http://[") + address.toString() + QLatin1Char(']') + path);
    default:
        return QUrl();
    }
}

QNetworkRequest VeskApp::cameraRequest(const QHostAddress &address, const QString &path, RequestBody body)
{
    QNetworkRequest request(urlForAddress(address, path));
    request.setRawHeader("User-Agent", "Vesk 1.0");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    if (body == JsonBody)
        request.setRawHeader("Content-Type", "application/json");
    return request;
}

void VeskApp::limitReply(QNetworkReply *reply)
{
    connect(reply, &QNetworkReply::readyRead, reply, [reply] {
        if (reply->bytesAvailable() > MaxReplyBytes)
            reply->abort();
    });
}
