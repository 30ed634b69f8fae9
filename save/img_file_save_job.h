#pragma once

#include "save/file_save_job.h"

/** Saves each frame as an image, as it looks on the screen. Lives on the GUI thread. */
class ImgFileSaveJob : public FileSaveJob
{
    Q_OBJECT

public:
    /** A name without a number gets one, so that each image has a name of its own. */
    ImgFileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt, Util::Format format,
                   const FileNameTemplate &fileName, QObject *parent);

    /** Shows the folder. */
    void open() override;
};
