#pragma once

#include "image/img_adj_model.h"

class VeskFile;

/** The adjustment of a native file: read from the file when it opens, then kept in memory. */
class VeskFileImgAdjModel : public ImgAdjModel
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit VeskFileImgAdjModel(VeskFile *file);
};
