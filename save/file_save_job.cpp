#include "save/file_save_job.h"

#include "file/vesk_file_reader.h"
#include "save/vesk_writer.h"
#include "take/abstract_take.h"
#include "take/abstract_take_reader.h"

static VeskReader *newReader(FileSaveJob *job)
{
    if (job->sourceType() == SaveJob::VeskFileSourceType)
        return new VeskFileReader(job);
    return new AbstractTakeReader(job);
}

FileSaveJob::FileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt, const Output &output,
                         const FileNameTemplate &fileName, QObject *parent)
    : SaveJob(source, startFr, frCnt, output, fileName, parent), m_reader(newReader(this))
{
}

/** A job that waited may find its source gone: destroyed, or a take without its recording. */
bool FileSaveJob::sourceGone() const
{
    auto *take = qobject_cast<AbstractTake *>(source());
    return !source() || (take && !take->savedOpened());
}

/** The writer comes first: the reader gives its chunks to the writer's worker, which start() makes. */
bool FileSaveJob::doStart()
{
    if (sourceGone())
        m_writer->setError(QStringLiteral("take deleted or closed"));
    if (sourceGone() || !m_writer->start()) {
        setError(m_writer->error());
        finish(FinishError);
        return false;
    }
    if (!m_reader->start()) {
        setError(m_reader->error());
        finish(FinishError);
        m_writer->cancel(FinishError);
        return false;
    }
    connect(m_writer, &VeskWriter::progressChanged, this, [this] { setProgress(m_writer->progress()); });
    connect(m_writer, &VeskWriter::finished, this, &SaveJob::finish);
    return true;
}

void FileSaveJob::doFinish(FinishState state)
{
    // Also where the reader could not start: the writer, which knows of no error, then clears the text.
    if (state == FinishError)
        setError(m_writer->error());
    disconnect(m_writer, nullptr, this, nullptr);
}

void FileSaveJob::cancel(FinishState state)
{
    if (this->state() != Saving)
        return;
    m_reader->stop();
    m_writer->cancel(state);
}
