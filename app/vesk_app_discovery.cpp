#include "app/vesk_app.h"

#include "camera/camera.h"
#include "file/vesk_file.h"

#include <QDebug>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QTimer>
#include <QUdpSocket>

#include <algorithm>

using namespace std::chrono_literals;

static constexpr quint16 DiscoveryPort = 8890;
static constexpr auto BroadcastInterval = 1000ms;
static constexpr int BroadcastRounds = 2;
static constexpr char BroadcastWord[] = "VESK_BCAST\n";
static const QString ReplyWord = QStringLiteral("VESK_REPLY\n");

void VeskApp::startBroadcast()
{
    if (m_broadcasting)
        return;
    m_broadcastTicks = 0;
    buildBroadcastEntries();
    m_broadcastTimer->start(BroadcastInterval);
    m_broadcasting = true;
}

void VeskApp::buildBroadcastEntries()
{
    constexpr auto usable =
        QNetworkInterface::IsUp | QNetworkInterface::IsRunning | QNetworkInterface::CanBroadcast;
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &interface : interfaces) {
        const auto flags = interface.flags();
        if ((flags & usable) != usable || flags.testFlag(QNetworkInterface::IsLoopBack))
            continue;
        const QList<QNetworkAddressEntry> addresses = interface.addressEntries();
        for (const QNetworkAddressEntry &address : addresses)
            addBroadcastEntry(address.ip(), address.broadcast());
    }
}

void VeskApp::addBroadcastEntry(const QHostAddress &ip, const QHostAddress &broadcast)
{
    const bool known = std::any_of(m_broadcastEntries.cbegin(), m_broadcastEntries.cend(),
                                   [&ip](const BroadcastEntry &entry) { return entry.ip == ip; });
    if (broadcast.isNull() || known)
        return;
    auto *socket = new QUdpSocket(this);
    if (!socket->bind(ip, DiscoveryPort, QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint)) {
        socket->deleteLater();
        return;
    }
    connect(socket, &QUdpSocket::readyRead, this, &VeskApp::recvBroadcastReply);
    m_broadcastEntries.append({ip, broadcast, socket});
    qDebug() << "broadcast to " << broadcast;
}

void VeskApp::stopBroadcast()
{
    if (!m_broadcasting)
        return;
    for (const BroadcastEntry &entry : std::as_const(m_broadcastEntries)) {
        entry.socket->close();
        entry.socket->deleteLater();
    }
    m_broadcastEntries.clear();
    m_broadcastTimer->stop();
    m_broadcasting = false;
}

void VeskApp::sendBroadcast()
{
    if (!m_broadcasting)
        return;
    if (m_broadcastTicks == BroadcastRounds) {
        stopBroadcast();
        return;
    }
    for (const BroadcastEntry &entry : std::as_const(m_broadcastEntries))
        entry.socket->writeDatagram(BroadcastWord, entry.broadcast, DiscoveryPort);
    ++m_broadcastTicks;
}

void VeskApp::recvBroadcastReply()
{
    auto *socket = qobject_cast<QUdpSocket *>(sender());
    if (!socket)
        return;
    while (socket->hasPendingDatagrams()) {
        QByteArray datagram(std::max<qint64>(socket->pendingDatagramSize(), 0), Qt::Uninitialized);
        QHostAddress source;
        const qint64 size = socket->readDatagram(datagram.data(), datagram.size(), &source);
        datagram.truncate(std::max<qint64>(size, 0));
        // An IPv4-mapped IPv6 address becomes the plain one that the list of cameras holds.
        const QHostAddress address(source.toIPv4Address());
        if (address.isNull() || address == QHostAddress(quint32(0)))
            continue;
        if (QString::fromUtf8(datagram.left(ReplyWord.size())) == ReplyWord)
            connectCamera(address);
    }
}

bool VeskApp::hasCamera(const QHostAddress &ip) const
{
    const QList<VeskObject *> &sources = veskObjects();
    return std::any_of(sources.cbegin(), sources.cend(), [&ip](const VeskObject *source) {
        const auto *camera = qobject_cast<const Camera *>(source);
        return camera && camera->ip().isEqual(ip, QHostAddress::TolerantConversion);
    });
}

void VeskApp::connectCamera(const QHostAddress &ip)
{
    if (hasCamera(ip))
        return;
    auto *camera = new Camera(ip, this);
    camera->connectCamera();
    connect(camera, &Camera::cameraConnected, this, &VeskApp::connectCameraFinished);
    appendCamera(camera);
}

void VeskApp::connectCamera(const QString &ip)
{
    connectCamera(QHostAddress(ip));
}

void VeskApp::connectVirtualCamera()
{
    // An address reserved for documentation, which no camera has.
    appendCamera(new Camera(QHostAddress(QStringLiteral("192.0.2.0")), this));
}

void VeskApp::appendCamera(Camera *camera)
{
    m_veskObjModel->append(camera);
    connect(camera, &Camera::cameraConnectFailed, this, &VeskApp::removeVeskObject);
    connect(camera, &Camera::cameraDisconnected, this, &VeskApp::removeVeskObject);
    if (!m_selectedVeskObject)
        setSelectedVeskObject(camera);
}

void VeskApp::connectCameraFinished(Camera *camera)
{
    disconnect(camera, &Camera::cameraConnected, this, &VeskApp::connectCameraFinished);
    disconnect(camera, &Camera::cameraConnectFailed, this, &VeskApp::removeVeskObject);
}

/**
 * Whoever has a path and no URL puts "file:" in front of it, and the name may hold what has a meaning in a
 * URL, as in "take #3.vesk".
 */
static QString localPath(const QString &fileUrl, const QUrl &url)
{
    static const QString scheme = QStringLiteral("file:");
    if (fileUrl.startsWith(scheme) && !fileUrl.startsWith(scheme + QStringLiteral("//"))) {
        const QString typed = fileUrl.sliced(scheme.size());
        if (QFileInfo::exists(typed))
            return typed;
    }
    return url.toLocalFile();
}

void VeskApp::openVeskFile(const QString &fileUrl)
{
    const QUrl url(fileUrl);
    const QString path = localPath(fileUrl, url);
    auto *file = new VeskFile(path, this);
    qDebug() << Q_FUNC_INFO;
    qDebug() << fileUrl;
    qDebug() << url;
    qDebug() << path;
    if (!file->open()) {
        qDebug() << "error opening" << path;
        file->deleteLater();
        return;
    }
    connect(file, &VeskFile::closed, this, &VeskApp::removeVeskObject);
    m_veskObjModel->append(file);
    setSelectedVeskObject(file);
}

void VeskApp::removeVeskObject(VeskObject *veskObj)
{
    qDebug() << Q_FUNC_INFO;
    m_veskObjModel->remove(veskObj);
    veskObj->deleteLater();
}

void VeskApp::setSelectedVeskObject(VeskObject *veskObj)
{
    if (!veskObj || veskObj == m_selectedVeskObject)
        return;
    setNullVeskObject();
    connect(veskObj, &VeskObject::shouldBeUnselected, this, qOverload<>(&VeskApp::setNullVeskObject));
    connect(veskObj, &QObject::destroyed, this, &VeskApp::forgetSelected);
    m_selectedVeskObject = veskObj;
    veskObj->setSelected(true);
    emit selectedVeskObjectChanged();
}

void VeskApp::setNullVeskObject()
{
    setNullVeskObject(Empty);
}

void VeskApp::setNullVeskObject(BackgroundView view)
{
    if (VeskObject *veskObj = m_selectedVeskObject) {
        veskObj->setSelected(false);
        disconnect(veskObj, &VeskObject::shouldBeUnselected, this, qOverload<>(&VeskApp::setNullVeskObject));
        disconnect(veskObj, &QObject::destroyed, this, &VeskApp::forgetSelected);
        m_selectedVeskObject = nullptr;
        emit selectedVeskObjectChanged();
    }
    setBackgroundView(view);
}

void VeskApp::forgetSelected()
{
    m_selectedVeskObject = nullptr;
    emit selectedVeskObjectChanged();
    setBackgroundView(Empty);
}

void VeskApp::setBackgroundView(BackgroundView view)
{
    if (view == m_backgroundView)
        return;
    m_backgroundView = view;
    emit backgroundViewChanged();
}
