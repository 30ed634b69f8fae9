#include "sim/camera_thread.h"

#include <future>
#include <memory>

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
    const auto text = std::make_shared<std::promise<QString>>();
    QMetaObject::invokeMethod(
        &m_camera, [this, text] { text->set_value(m_camera.listen()); }, Qt::QueuedConnection);
    return text->get_future().get();
}

void CameraThread::close()
{
    const auto closed = std::make_shared<std::promise<void>>();
    const auto close = [this, closed] {
        m_camera.close();
        closed->set_value();
    };
    QMetaObject::invokeMethod(&m_camera, close, Qt::QueuedConnection);
    closed->get_future().get();
}

} // namespace q4sim
