#pragma once

#include "sim/camera.h"

#include <QThread>

namespace q4sim
{

/// A camera that answers from a thread of its own, for tests that block theirs.
class CameraThread
{
public:
    explicit CameraThread(const Config &config);
    ~CameraThread();

    /// Camera::listen() on the camera's thread; returns when it has finished.
    QString listen();
    void close();

    Camera &camera() { return m_camera; }

private:
    QThread m_thread;
    Camera m_camera;
};

} // namespace q4sim
