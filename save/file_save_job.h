#pragma once

#include "save/save_job.h"

class VeskReader;
class VeskWriter;

/**
 * A save into files: ties a reader, which fetches the frames, to a writer, which makes output of them. Both
 * are children of the job. Lives on the GUI thread.
 */
class FileSaveJob : public SaveJob
{
    Q_OBJECT

public:
    FileSaveJob(const SaveSource &source, qlonglong startFr, qlonglong frCnt, const Output &output,
                const FileNameTemplate &fileName, QObject *parent);

    VeskReader *reader() const { return m_reader; }
    VeskWriter *writer() const { return m_writer; }

    using SaveJob::cancel;
    void cancel(SaveJob::FinishState state) override;

protected:
    /** The subclass's writer, a child of the job; to be set in the subclass's constructor. */
    void setWriter(VeskWriter *writer) { m_writer = writer; }

    bool doStart() override;
    void doFinish(FinishState state) override;

private:
    bool sourceGone() const;

    VeskReader *m_reader = nullptr;
    VeskWriter *m_writer = nullptr;
};
