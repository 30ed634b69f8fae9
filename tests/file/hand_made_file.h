#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtGlobal>

/** Native files put together byte by byte, as their layout is written down and not as the program does it. */
namespace HandMade
{
/** The lowest bytes of a number, the lowest first. */
inline QByteArray little(quint64 number, int bytes)
{
    QByteArray text;
    for (int i = 0; i < bytes; ++i)
        text.append(char(number >> (8 * i) & 0xFF));
    return text;
}

inline QByteArray header(quint32 version, quint64 jsonOffset, quint64 jsonSize, quint64 dataOffset)
{
    QByteArray bytes =
        "VESK" + little(version, 4) + little(jsonOffset, 8) + little(jsonSize, 8) + little(dataOffset, 8);
    if (version >= 2)
        bytes += little(3, 4);
    return bytes;
}

/** Metadata of 8 bytes, the seconds and nanoseconds of the frame, then 4 x 2 pixels: code, code + 1, ... */
inline QByteArray record(quint32 seconds, uchar code)
{
    QByteArray bytes = little(seconds, 4) + little(500, 4);
    for (int i = 0; i < 8; ++i)
        bytes.append(char(code + i));
    return bytes;
}

/** What the frames of record() need to be read. */
inline QByteArray description(int firstFr, int lastFr, const QByteArray &more = {})
{
    return "{\"acq\":{\"res\":\"4x2\"},\"first_fr\":" + QByteArray::number(firstFr) +
           ",\"fr_cnt\":" + QByteArray::number(lastFr - firstFr + 1) +
           ",\"last_fr\":" + QByteArray::number(lastFr) + ",\"meta\":{\"size\":8,\"year_offset\":0}" + more +
           "}";
}

/** The layout that is written today: JSON behind the header, frames from the next multiple of 4096 on. */
inline QByteArray usual(const QByteArray &json, const QByteArray &frames)
{
    const qsizetype dataOffset = (json.size() + 36 + 4095) / 4096 * 4096;
    return (header(2, 36, quint64(json.size()), quint64(dataOffset)) + json).leftJustified(dataOffset, '\0') +
           frames;
}

/** Frames firstFr to lastFr; each has its distance from the first as seconds and ten times that as code. */
inline QByteArray usualRun(int firstFr, int lastFr, const QByteArray &more = {})
{
    QByteArray frames;
    for (int i = 0; i <= lastFr - firstFr; ++i)
        frames += record(quint32(i), uchar(10 * i));
    return usual(description(firstFr, lastFr, more), frames);
}

/** A folder with files of given bytes. */
class Folder
{
public:
    QString path(const QString &name = QStringLiteral("a.vesk")) const { return m_dir.filePath(name); }
    QString write(const QByteArray &bytes, const QString &name = QStringLiteral("a.vesk")) const
    {
        QFile file(path(name));
        const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        if (!written)
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

private:
    QTemporaryDir m_dir;
};

/** Keeps what is logged from warnings on while it lives. */
class LogLines
{
public:
    LogLines()
    {
        lines().clear();
        m_before =
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
                if (type != QtDebugMsg && type != QtInfoMsg)
                    lines().append(
                        (type == QtCriticalMsg ? QStringLiteral("Critical: ") : QStringLiteral("Other: ")) +
                        text);
            });
    }
    ~LogLines() { qInstallMessageHandler(m_before); }
    Q_DISABLE_COPY_MOVE(LogLines)

    static QStringList &lines()
    {
        static QStringList list;
        return list;
    }

private:
    QtMessageHandler m_before;
};
} // namespace HandMade
