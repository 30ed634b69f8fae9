#pragma once

#include "file/vesk_file_format.h"
#include "take/playback_vesk_object.h"

#include <QString>

class QFile;
class VeskApp;

/**
 * A recording in a native capture file: the counterpart of a take, whose frames are read from the disk. Lives
 * on the GUI thread, which waits while a frame is read; a save has a handle of its own on the same path.
 */
class VeskFile : public PlaybackVeskObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(QString fileName READ fileName CONSTANT)

public:
    /** playClock tells which frame is due; tests move one of their own. */
    VeskFile(const QString &fileName, VeskApp *app, const PlayClock &playClock = PlayClock());
    ~VeskFile() override;

    /** Path of the file, as it was given. */
    const QString &fileName() const { return m_fileName; }
    bool isOpen() const { return m_isOpen; }

    /** What the header told when the file was opened. */
    quint32 version() const { return m_header.version; }
    quint64 jsonOffset() const { return m_header.jsonOffset; }
    quint64 jsonSize() const { return m_header.jsonSize; }
    quint32 dataFormat() const { return m_header.dataFormat; }
    /** Bytes from the start of the file to the first record. */
    qint64 dataOffset() const { return qint64(m_header.dataOffset); }

    /**
     * Opens the file, pours its values over this object and opens the range to all of its frames. False, with
     * a line in the log where the file is there but damaged; the object is of no more use then.
     */
    bool open();

    using PlaybackVeskObject::getFrame;
    /** Fills rawFrame before it returns, with as much of the record as the file holds; -1 when not open. */
    int getFrame(RawFrame *rawFrame, qlonglong fr) override;

public slots:
    /** Ends the use of the file. A save that reads from it goes on. */
    void close();

signals:
    /** The source is to be taken away. */
    void closed(VeskFile *file);

protected:
    bool framesBlocked() const override { return !m_isOpen; }

private:
    bool readHeader();

    QFile *m_file;
    QString m_fileName;
    bool m_isOpen = false;
    VeskFileFormat::Header m_header;
};
