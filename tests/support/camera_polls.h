#pragma once

#include "camera/camera.h"

#include <QSignalSpy>
#include <QTest>

/** Connects; false when it does not within a while. */
inline bool connects(Camera &camera)
{
    QSignalSpy connected(&camera, &Camera::cameraConnected);
    camera.connectCamera();
    return QTest::qWaitFor([&] { return connected.count() == 1; });
}

/** The camera has worked through a poll that was sent after this call. */
inline bool polls(Camera &camera)
{
    QSignalSpy polled(&camera, &Camera::valuesPolled);
    return QTest::qWaitFor([&] { return polled.count() >= 2; });
}
