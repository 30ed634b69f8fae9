#pragma once

#include "image/img_adj_model.h"

class AbstractTake;

/** The adjustment of a take: the camera keeps the values in the take's record. */
class AbstractTakeImgAdjModel : public ImgAdjModel
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit AbstractTakeImgAdjModel(AbstractTake *take);
};
