#pragma once

#include "save/file_save_job.h"

/** Saves frames as a film, as they look on the screen. Lives on the GUI thread. */
class VideoFileSaveJob : public FileSaveJob
{
    Q_OBJECT

public:
    /** frameRate in frames per second; quality as VideoEncoder takes it. */
    VideoFileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt, Util::Format format,
                     Util::Codec codec, double frameRate, int quality, const FileNameTemplate &fileName,
                     QObject *parent);

    /** Plays the film with what the desktop has for it. */
    void open() override;
};
