#include "image/camera_img_adj_model.h"

#include "camera/camera.h"
#include "camera/camera_value.h"

CameraImgAdjModel::CameraImgAdjModel(Camera *camera) : ImgAdjModel(camera)
{
    createValues<CameraValue>(camera);
}
