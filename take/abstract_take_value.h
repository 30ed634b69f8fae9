#pragma once

#include "camera/camera_value.h"

/** A value of a take. Its writes go to the take's own path on the camera. */
class AbstractTakeValue : public CameraValue
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    /** parent is the AbstractTake whose description holds the value. */
    using CameraValue::CameraValue;

protected:
    void sendValue() override;
};
