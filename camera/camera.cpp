#include "camera/camera.h"

#include "app/qml_object_list_model.h"
#include "app/vesk_app.h"
#include "camera/camera_io.h"
#include "image/camera_img_adj_model.h"
#include "save/save_job_queue.h"

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

using namespace std::chrono_literals;

static constexpr auto PollInterval = 250ms;
static constexpr auto PreviewInterval = 33ms;
static constexpr int UserLines = 6;

Camera::Camera(const QHostAddress &ip, QObject *parent) : VeskObject(CameraType, parent), m_ip(ip)
{
    createValues();
    wireLists();
    createLines();
    createTakes();
    createLists();
    auto *model = new CameraImgAdjModel(this);
    setImgAdjModel(model);
    setVeskFrame(new VeskFrame(&model->data(), this));
    createDrive();

    m_pollTimer = new QTimer(this);
    connect(m_pollTimer, &QTimer::timeout, this, [this] { pollCameraValues(false); });
    m_previewTimer = new QTimer(this);
    m_previewTimer->setTimerType(Qt::PreciseTimer);
    connect(m_previewTimer, &QTimer::timeout, this, &Camera::previewTick);
    connect(this, &VeskObject::selectedChanged, this, &Camera::armPreview);

    m_fileSaveJobQueue = new SaveJobQueue(this);
    m_ssdSaveJobQueue = new SaveJobQueue(this);
    createFirmwareUpdate();
    setObjectName(objectName() + QStringLiteral("-Camera"));
}

void Camera::createValues()
{
    struct ValueRow {
        ValueIndex index;
        const char *path;
        const char *altPath;
        int type;
    };
    static constexpr ValueRow rows[] = {
#define VESK_VALUE_ROW(property, path, altPath, type) {ValueIndex::property, path, altPath, type},
        VESK_CAMERA_VALUES(VESK_VALUE_ROW)
#undef VESK_VALUE_ROW
    };
    for (const ValueRow &row : rows) {
        auto *value = new CameraValue(QString::fromLatin1(row.path).split(QLatin1Char('/')), row.type, this,
                                      nullptr, QString::fromLatin1(row.altPath).split(QLatin1Char('/')));
        m_cameraValues[std::size_t(row.index)] = value;
        appendValue(value);
    }
}

void Camera::createLines()
{
    auto *ios = new QQmlObjectListModel<CameraIO>(this);
    ios->append(new CameraIO(QStringLiteral("Trigger I/O"), QStringLiteral("trigger"), this, CameraIO::Trig));
    for (int number = 1; number <= UserLines; ++number)
        ios->append(new CameraIO(QStringLiteral("I/O %1").arg(number), QStringLiteral("io%1").arg(number),
                                 this, CameraIO::User));
    m_ios = ios;
}

QString Camera::settingsKey(const QString &key) const
{
    const QString serial = serialValue()->text();
    return QStringLiteral("cameras/%1/%2").arg(serial.isEmpty() ? QStringLiteral("000000") : serial, key);
}

QVariant Camera::setting(const QString &key, const QVariant &defaultValue) const
{
    return VeskApp::instance()->setting(settingsKey(key), defaultValue);
}

QVariant Camera::setting(const QString &key) const
{
    return VeskApp::instance()->setting(settingsKey(key));
}

void Camera::setSetting(const QString &key, const QVariant &value)
{
    VeskApp::instance()->setSetting(settingsKey(key), value);
}

int Camera::getFrame(RawFrame *rawFrame)
{
    return getFrameXfer(rawFrame, m_ip, "{\"type\":3,\"src\":1}");
}

bool Camera::framesBlocked() const
{
    return m_fileSaveJobQueue->activeSaveJob();
}

quint64 Camera::yearOffset() const
{
    return yearOffsetValue()->variant().toULongLong();
}

void Camera::connectCamera()
{
    pollCameraValues(true);
}

void Camera::disconnectCamera()
{
    qDebug() << Q_FUNC_INFO;
    emit shouldBeUnselected();
    unselectTakes(*m_takes);
    unselectTakes(*m_ssdTakes);
    setConnected(false);
}

void Camera::pollCameraValues(bool init)
{
    if (m_pollInProgress)
        return;
    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->get(
        VeskApp::cameraRequest(m_ip, QString(), VeskApp::NoBody));
    VeskApp::limitReply(reply);
    reply->setProperty("init", init);
    m_pollInProgress = true;
    expectSsdTakes();
    connect(reply, &QNetworkReply::finished, this, &Camera::pollCameraValuesFinished);
    connect(this, &QObject::destroyed, reply, &QObject::deleteLater);
}

void Camera::pollCameraValuesFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    QJsonDocument document;
    const bool usable = readReply(reply, &document);
    if (usable) {
        const QJsonObject object = document.object();
        updateValues(object);
        const bool init = reply->property("init").toBool();
        updateTakes(object, init);
        updateSsdTakes(object, init);
        setConnected(true, object);
    }
    if (!document.isNull())
        emit valuesPolled();
    m_pollInProgress = false;
    reply->deleteLater();
}

void Camera::setConnected(bool now, const QJsonObject &document)
{
    if (now == m_connected) {
        if (!now)
            emit cameraConnectFailed(this);
        return;
    }
    m_connected = now;
    emit connectedChanged();
    if (now) {
        startConnected(document);
        return;
    }
    m_pollTimer->stop();
    m_previewTimer->stop();
    emit cameraDisconnected(this);
}

void Camera::startConnected(const QJsonObject &document)
{
    updateResList(document);
    updateFrRateList();
    updateExpList();
    updateVidFormatList(document);
    updateFstopList();
    // The workstation sets the camera's clock at every connection.
    timeValue()->setValue(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                          false);
    for (int i = 0; i < m_ios->size(); ++i)
        qobject_cast<CameraIO *>(m_ios->get(i))->update();
    m_pollTimer->start(PollInterval);
    m_previewClock.start();
    armPreview();
    emit cameraConnected(this);
}

void Camera::armPreview()
{
    if (!m_connected || !selected()) {
        m_previewTimer->stop();
        return;
    }
    const std::chrono::milliseconds sinceConnection(m_previewClock.elapsed());
    m_previewTimer->start(PreviewInterval - sinceConnection % PreviewInterval);
}

void Camera::previewTick()
{
    if (m_previewTimer->intervalAsDuration() != PreviewInterval)
        m_previewTimer->start(PreviewInterval);
    requestFrame();
}
