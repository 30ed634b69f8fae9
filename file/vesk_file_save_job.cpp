#include "file/vesk_file_save_job.h"

#include "app/vesk_app.h"
#include "file/vesk_file_writer.h"

VeskFileSaveJob::VeskFileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt,
                                 const FileNameTemplate &fileName, QObject *parent)
    : FileSaveJob(source, startFr, frCnt, {}, fileName, parent)
{
    setWriter(new VeskFileWriter(this));
}

void VeskFileSaveJob::open()
{
    if (state() == Done)
        VeskApp::instance()->openVeskFile(QStringLiteral("file:") + fileNameTemplate().filePath(0, {}));
}
