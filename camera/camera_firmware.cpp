// Firmware update: one upload, and one line that tells how the camera gets on with it.

#include "camera/camera.h"

#include "app/vesk_app.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// The camera tells neither how far it is nor when it is done; this is the wait that its makers ask for.
static constexpr auto FinalizeTime = 90s;
// An upload that has started, before its first progress report.
static constexpr double StartedProgress = 0.0001;

void Camera::createFirmwareUpdate()
{
    m_fwFinalizeTimer = new QTimer(this);
    m_fwFinalizeTimer->setObjectName(u"fwFinalizeTimer"_s);
    m_fwFinalizeTimer->setSingleShot(true);
    connect(m_fwFinalizeTimer, &QTimer::timeout, this, [this] {
        m_fwFinalizing = false;
        updateFwStatus();
    });
    connect(this, &Camera::fwUpdateProgressChanged, this, &Camera::updateFwStatus);
    connect(fwStateValue(), &VeskValue::valueChanged, this, &Camera::updateFwStatus);
}

void Camera::fwUpdate(const QString &fileUrl)
{
    qDebug() << Q_FUNC_INFO;
    const QString path = QUrl(fileUrl).toLocalFile();
    auto *form = new QHttpMultiPart(QHttpMultiPart::FormDataType);
    auto *file = new QFile(path, form);
    // A file that cannot be read goes out as an empty part, which the camera refuses.
    if (!file->open(QIODevice::ReadOnly))
        qDebug() << "fwUpdate: cannot read" << path << file->errorString();
    QHttpPart part;
    part.setHeader(QNetworkRequest::ContentDispositionHeader,
                   u"form-data; name=\"q4fw\"; filename=\"%1\""_s.arg(QFileInfo(path).fileName()));
    if (file->isOpen())
        part.setBodyDevice(file);
    form->append(part);

    QNetworkReply *reply = VeskApp::instance()->networkAccessManager()->post(
        VeskApp::cameraRequest(m_ip, u"/q4fw"_s, VeskApp::NoBody), form);
    form->setParent(reply);
    VeskApp::limitReply(reply);
    setFwUpdateProgress(StartedProgress);
    connect(reply, &QNetworkReply::uploadProgress, this, [this](qint64 sent, qint64 total) {
        if (total > 0)
            setFwUpdateProgress(double(sent) * 100.0 / double(total));
    });
    connect(reply, &QNetworkReply::finished, this, &Camera::fwUpdateFinished);
    // Also without this object: nothing stops an upload, as half a firmware helps no camera.
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
}

void Camera::setFwUpdateProgress(double percent)
{
    if (qFuzzyCompare(percent, m_fwUpdateProgress))
        return;
    m_fwUpdateProgress = percent;
    emit fwUpdateProgressChanged();
}

void Camera::fwUpdateFinished()
{
    auto *reply = qobject_cast<QNetworkReply *>(sender());
    if (fwStateValue()->variant().toInt() < 2)
        m_fwFinalizing = true;
    setFwUpdateProgress(0.0);
    if (reply->error() != QNetworkReply::NoError) {
        m_fwUpdateStatus = u"Update error: upload failed"_s;
        emit fwUpdateStatusChanged();
    }
}

void Camera::updateFwStatus()
{
    m_fwUpdateStatus = fwStatusText();
    emit fwUpdateStatusChanged();
}

QString Camera::fwStatusText()
{
    if (qFuzzyCompare(m_fwUpdateProgress, 100.0))
        return u"Installing firmware update...Do NOT power off camera!"_s;
    if (m_fwUpdateProgress > 0)
        return u"Uploading Q4FW file...%1%"_s.arg(QString::number(m_fwUpdateProgress, 'f', 0));
    const int state = fwStateValue()->variant().toInt();
    if (state == 0)
        return {};
    if (state != 1)
        return u"Update error: %1"_s.arg(state);
    if (!m_fwFinalizing)
        return u"Firmware update installed! Restart camera to complete update."_s;
    if (!m_fwFinalizeTimer->isActive())
        m_fwFinalizeTimer->start(FinalizeTime);
    return u"Finalizing firmware update...Do NOT power off camera!"_s;
}
