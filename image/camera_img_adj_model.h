#pragma once

#include "image/img_adj_model.h"

class Camera;

/** The adjustment of a camera: the camera keeps the values, so that they follow its polls and are sent to it.
 */
class CameraImgAdjModel : public ImgAdjModel
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit CameraImgAdjModel(Camera *camera);
};
