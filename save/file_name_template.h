#pragma once

#include "app/util.h"

#include <QList>
#include <QString>

/** One piece of a file name: text, or a number that is filled in. */
struct FileNameElement {
    enum Type { Text = 0, FrameNumber = 1, SequenceNumber = 2 };

    int type = Text;
    QString text;
    /** Digits at least; 0 for as many as the number has. */
    int width = 0;
};

/**
 * Folder and name of what a save writes, as the operator typed it: plain text with the tags <fr> and <seq>,
 * each with a number of digits if wanted, as in take_<seq:4>. A plain value; on the GUI thread it is made, on
 * the writer's worker a copy of it is used.
 */
class FileNameTemplate
{
public:
    FileNameTemplate() = default;
    /**
     * startFr is the number of the job's first frame. A name with a sequence tag takes the next number from
     * the settings, unless the format is a sequence of images, which count from 0 each time.
     */
    FileNameTemplate(const QString &folder, const QString &fileName, Util::Format format, qlonglong startFr);

    /** The name for a frame of the job, counted from 0, without folder, suffix and extension. */
    QString expand(qlonglong frameIndex) const;
    QString filePath(qlonglong frameIndex, const QString &suffix) const;
    /** Puts a text in the place of the name or, with append, behind it. */
    void setName(const QString &text, bool append);
    /** The name has a number in it, so that each frame may have a name of its own. */
    bool hasFrameTag() const;
    /** The first number from 2 on for which the path with the suffix of that number is free. */
    qlonglong nextFreeSuffixNumber(qlonglong frameIndex) const;
    /** What goes behind a name that is taken, with a leading blank; empty while the name is free. */
    QString freeSuffix(qlonglong frameIndex) const;

    const QString &folder() const { return m_folder; }
    const QList<FileNameElement> &elements() const { return m_elements; }
    /** Without the dot. */
    const QString &ext() const { return m_ext; }
    qlonglong startFr() const { return m_startFr; }
    qlonglong seq() const { return m_seq; }

private:
    bool hasElement(int type) const;

    QString m_folder;
    QList<FileNameElement> m_elements;
    QString m_ext;
    qlonglong m_startFr = 0;
    qlonglong m_seq = 0;
};
