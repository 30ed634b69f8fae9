#include "save/video_file_save_job.h"

#include "save/video_file_writer.h"

#include <QDesktopServices>
#include <QUrl>

VideoFileSaveJob::VideoFileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt,
                                   Util::Format format, Util::Codec codec, double frameRate, int quality,
                                   const FileNameTemplate &fileName, QObject *parent)
    : FileSaveJob(source, startFr, frCnt,
                  {.format = format, .codec = codec, .frameRate = frameRate, .quality = quality}, fileName,
                  parent)
{
    setWriter(new VideoFileWriter(this));
}

void VideoFileSaveJob::open()
{
    if (state() == Done)
        QDesktopServices::openUrl(QUrl::fromLocalFile(fileNameTemplate().filePath(0, {})));
}
