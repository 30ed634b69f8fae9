#include "image/abstract_take_img_adj_model.h"

#include "take/abstract_take.h"
#include "take/abstract_take_value.h"

AbstractTakeImgAdjModel::AbstractTakeImgAdjModel(AbstractTake *take) : ImgAdjModel(take)
{
    createValues<AbstractTakeValue>(take);
}
