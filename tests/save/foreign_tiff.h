#pragma once

#include <QByteArray>
#include <QProcess>
#include <QRegularExpression>
#include <QString>

/** An image as a program reads it that has a reader of its own: size, and red, green, blue of each pixel. */
struct ForeignTiff {
    int width = 0;
    int height = 0;
    QByteArray rgb;

    static ForeignTiff read(const QString &path)
    {
        QProcess reader;
        reader.start(QStringLiteral("ffmpeg"), {"-nostdin", "-hide_banner", "-xerror", "-f", "tiff_pipe",
                                                "-i", path, "-f", "rawvideo", "-pix_fmt", "rgb24", "pipe:1"});
        if (!reader.waitForFinished() || reader.exitCode() != 0)
            return {};
        // What is in the file, before it is converted to anything.
        static const QRegularExpression input(
            QStringLiteral("Stream #0:0: Video: tiff, rgb24[^\\n]*, (\\d+)x(\\d+)[, ]"));
        const auto told = input.match(QString::fromUtf8(reader.readAllStandardError()));
        return {told.captured(1).toInt(), told.captured(2).toInt(), reader.readAllStandardOutput()};
    }
};
