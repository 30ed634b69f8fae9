#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>

/** A film as programs read it that share nothing with the encoder but their origin. */
class ForeignFilm
{
public:
    explicit ForeignFilm(const QString &path) : m_path(path)
    {
        const QByteArray told =
            run(QStringLiteral("ffprobe"), {"-v", "error", "-count_frames", "-show_streams", "-show_format",
                                            "-show_packets", "-of", "json", path});
        m_told = QJsonDocument::fromJson(told).object();
    }

    /** Of the only stream; empty when there is none, or more. */
    QString stream(const char *key) const
    {
        const QJsonArray streams = m_told["streams"].toArray();
        return streams.size() == 1 ? streams[0].toObject()[QLatin1StringView(key)].toVariant().toString()
                                   : QString();
    }
    QString format(const char *key) const
    {
        return m_told["format"].toObject()[QLatin1StringView(key)].toVariant().toString();
    }
    QString tag(const char *key) const
    {
        return m_told["format"].toObject()["tags"].toObject()[QLatin1StringView(key)].toString();
    }
    int frames() const { return stream("nb_read_frames").toInt(); }
    QString size() const { return stream("width") + QLatin1Char('x') + stream("height"); }

    /** Numbers of all packets, in the time base of the stream. */
    QList<qint64> packets(const char *key) const
    {
        QList<qint64> numbers;
        for (const QJsonValue &packet : m_told["packets"].toArray())
            numbers.append(packet[QLatin1StringView(key)].toInteger(-1));
        return numbers;
    }

    /** All frames in a pixel format, one behind the other; empty when something is wrong with one. */
    QByteArray decoded(const QString &pixelFormat) const
    {
        return run(QStringLiteral("ffmpeg"),
                   {"-nostdin", "-v", "error", "-xerror", "-i", m_path, "-fps_mode", "passthrough", "-f",
                    "rawvideo", "-pix_fmt", pixelFormat, "pipe:1"});
    }

private:
    static QByteArray run(const QString &program, const QStringList &arguments)
    {
        QProcess process;
        process.start(program, arguments);
        if (!process.waitForFinished(60000) || process.exitCode() != 0)
            return {};
        return process.readAllStandardOutput();
    }

    QString m_path;
    QJsonObject m_told;
};
