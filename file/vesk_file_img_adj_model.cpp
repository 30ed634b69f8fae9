#include "file/vesk_file_img_adj_model.h"

#include "file/vesk_file.h"
#include "file/vesk_file_value.h"

VeskFileImgAdjModel::VeskFileImgAdjModel(VeskFile *file) : ImgAdjModel(file)
{
    createValues<VeskFileValue>(file);
}
