#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

/** An image as a program reads it that has a reader of its own: size, and red, green, blue of each pixel. */
struct ForeignTiff {
    int width = 0;
    int height = 0;
    QByteArray rgb;

    static ForeignTiff read(const QString &path)
    {
        QProcess probe;
        probe.start(QStringLiteral("ffprobe"), {"-v", "error", "-f", "tiff_pipe", "-show_entries",
                                                "stream=width,height,pix_fmt", "-of", "csv=p=0", "-i", path});
        probe.waitForFinished();
        const QList<QByteArray> told = probe.readAllStandardOutput().trimmed().split(',');
        if (told.size() != 3 || told[2] != "rgb24")
            return {};
        QProcess reader;
        reader.start(QStringLiteral("ffmpeg"), {"-v", "error", "-f", "tiff_pipe", "-i", path, "-f",
                                                "rawvideo", "-pix_fmt", "rgb24", "pipe:1"});
        reader.waitForFinished();
        return {told[0].toInt(), told[1].toInt(), reader.readAllStandardOutput()};
    }
};
