#pragma once

#include "save/file_save_job.h"

/** Saves frames as a native file, which holds them as the camera sent them. Lives on the GUI thread. */
class VeskFileSaveJob : public FileSaveJob
{
    Q_OBJECT

public:
    VeskFileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt,
                    const FileNameTemplate &fileName, QObject *parent);

    /** Opens the file as a source. */
    void open() override;
};
