#include "sim/camera_thread.h"

namespace q4sim
{

CameraThread::CameraThread(const Config &config) : m_camera(config)
{
    m_thread.setObjectName(QStringLiteral("q4sim ") + config.address.toString());
    m_camera.moveToThread(&m_thread);
    m_thread.start();
}

CameraThread::~CameraThread()
{
    close();
    m_thread.quit();
    m_thread.wait();
}

QString CameraThread::listen()
{
    QString text;
    QMetaObject::invokeMethod(
        &m_camera, [this] { return m_camera.listen(); }, Qt::BlockingQueuedConnection, &text);
    return text;
}

void CameraThread::close()
{
    QMetaObject::invokeMethod(&m_camera, [this] { m_camera.close(); }, Qt::BlockingQueuedConnection);
}

} // namespace q4sim
