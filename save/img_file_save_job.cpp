#include "save/img_file_save_job.h"

#include "save/img_file_writer.h"

#include <QDesktopServices>
#include <QUrl>

ImgFileSaveJob::ImgFileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt,
                               Util::Format format, const FileNameTemplate &fileName, QObject *parent)
    : FileSaveJob(source, startFr, frCnt, {.format = format, .codec = Util::CodecRaw_RGB24}, fileName, parent)
{
    setWriter(new ImgFileWriter(this));
    if (!fileNameTemplate().hasFrameTag())
        appendToFileName(QStringLiteral("_<seq:%1>").arg(QString::number(frCnt).size()));
}

void ImgFileSaveJob::open()
{
    if (state() == Done)
        QDesktopServices::openUrl(QUrl::fromLocalFile(fileNameTemplate().folder()));
}
