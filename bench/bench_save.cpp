// Saves of one process, without a window or with it. Prints one JSON object.
//
//   bench_save native ADDRESS FRAMES FOLDER           frames 0 on of the camera's take 1, as a native file
//   bench_save slow ADDRESS FRAMES FOLDER RATE        the same on a disk of RATE million bytes a second
//   bench_save images FILE FRAMES FOLDER              frames of a native file as images
//   bench_save film FILE FRAMES FOLDER CODEC          the same as a film; CODEC is a number of Util::Codec
//   bench_save plain FILE FRAMES FOLDER CODEC         the same, one step after the other on one thread
//   bench_save window ADDRESS FRAMES FOLDER FILE      both at once, one of each cancelled, and a film
//
// "seconds" is the time from the order to the end of the save, "peak_bytes" the most memory that the process
// had in use, "stall_s" the longest time in which the GUI thread answered nothing. "film_s" is that of the
// beginning of a film, which opens its encoder on that thread and is left out of "stall_s".

#include "app/interface.h"
#include "app/vesk_app.h"
#include "bench/pulse.h"
#include "camera/camera.h"
#include "file/vesk_file.h"
#include "file/vesk_file_writer.h"
#include "save/file_save_job.h"
#include "save/save_job_queue.h"
#include "save/save_manager.h"
#include "save/video_encoder.h"
#include "take/frame_geometry.h"
#include "take/saved_take_model.h"
#include "take/take.h"
#include "take/vesk_frame.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImageWriter>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QQmlApplicationEngine>
#include <QTimer>
#include <QtEndian>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
void stop(const QString &why)
{
    std::fprintf(stderr, "bench_save: %s\n", qPrintable(why));
    std::exit(1);
}

/** Runs the event loop until the condition holds; looked at whenever the signal comes. */
template <class Sender, class Signal>
void waitFor(const Sender *sender, Signal signal, const char *what, const std::function<bool()> &holds)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, [&] {
        if (holds())
            loop.quit();
    });
    QTimer::singleShot(300s, &loop, [what] { stop(QString::fromLatin1(what)); });
    if (!holds())
        loop.exec();
}

/** Most memory that the process has had in use. */
qint64 peakBytes()
{
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QIODevice::ReadOnly))
        stop(u"the memory cannot be measured"_s);
    const QByteArray status = file.readAll();
    const qsizetype at = status.indexOf("VmHWM:") + 6;
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toLongLong() * 1024;
}

void print(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

/** Writes like the writer of native files, but takes its time for each byte. */
class SlowWorker : public VeskWriterWorker
{
public:
    SlowWorker(QFile *file, double bytesPerSecond) : m_file(file), m_bytesPerSecond(bytesPerSecond) {}

    void writeFrames(QByteArray data, qlonglong, qlonglong framesRead, qlonglong framesRemaining) override
    {
        if (hasEnded())
            return;
        QThread::sleep(std::chrono::nanoseconds(qint64(double(data.size()) / m_bytesPerSecond * 1e9)));
        if (m_file->write(data) != data.size())
            stop(u"a write fails"_s);
        emit framesWritten(framesRead);
        if (framesRemaining == 0)
            emit finished(SaveJob::FinishDone);
    }

private:
    QFile *m_file;
    double m_bytesPerSecond;
};

class SlowWriter : public VeskWriter
{
public:
    SlowWriter(FileSaveJob *job, double bytesPerSecond) : VeskWriter(job), m_bytesPerSecond(bytesPerSecond) {}

    bool start() override
    {
        m_file.setFileName(job()->fileNameTemplate().filePath(0, {}));
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return false;
        startWorker(std::make_unique<SlowWorker>(&m_file, m_bytesPerSecond), u"SlowWriter Thread"_s);
        return true;
    }
    void close(SaveJob::FinishState) override { m_file.close(); }

private:
    QFile m_file;
    double m_bytesPerSecond;
};

class SlowJob : public FileSaveJob
{
public:
    SlowJob(Take *take, qlonglong frCnt, const QString &folder, double bytesPerSecond)
        : FileSaveJob(take, 0, frCnt, {}, {folder, u"slow"_s, Util::FormatVesk, 0}, nullptr)
    {
        setWriter(new SlowWriter(this, bytesPerSecond));
    }
    void open() override {}
};

/** The application with nothing in it. */
struct Application {
    explicit Application(char **argv)
        : app(argc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s)
    {
        app.stopBroadcast();
        app.set_networkAccessManager(&manager);
    }

    int argc = 1;
    VeskApp app;
    QNetworkAccessManager manager;
};

Take *takeOf(const Camera &camera)
{
    waitFor(&camera, &Camera::valuesPolled, "the camera does not connect",
            [&] { return camera.savedTakes()->count() == 1; });
    auto *take = qobject_cast<Take *>(camera.takes()->get(0));
    waitFor(take, &PlaybackVeskObject::valuesInitFinished, "the take has no description",
            [&] { return take->valuesInit(); });
    return take;
}

std::unique_ptr<VeskFile> openFile(const QString &path)
{
    auto file = std::make_unique<VeskFile>(path, VeskApp::instance());
    if (!file->open())
        stop(u"the native file does not open"_s);
    return file;
}

SaveJob *save(PlaybackVeskObject *source, qint64 frames, Util::Format format, const QString &name,
              const QString &folder)
{
    SaveJob *job = VeskApp::instance()->saveManager()->createSaveJob(
        source, source->firstFrValue()->variant().toInt(), frames, SaveManager::FileDest, format,
        Util::CodecVesk, 0.0, 0, name, folder);
    if (!job)
        stop(u"no job can be made"_s);
    return job;
}

void waitFor(const SaveJob *job, SaveJob::State state)
{
    waitFor(job, &SaveJob::stateChanged, "a save does not end",
            [&] { return job->state() > SaveJob::Saving; });
    if (job->state() != state)
        stop(u"a save ended in state %1: %2"_s.arg(job->state()).arg(job->error()));
}

constexpr double FilmFrameRate = 30.0;
constexpr int FilmQuality = 15;
/** Of a film that is one save among others. */
constexpr qint64 FilmFrames = 100;

Util::Format filmFormat(Util::Codec codec)
{
    const bool raw = codec == Util::CodecRaw_BGR24 || codec == Util::CodecRaw_Gray8;
    return raw ? Util::FormatAvi : Util::FormatMp4;
}

SaveJob *saveFilm(PlaybackVeskObject *source, qint64 frames, Util::Codec codec, const QString &folder)
{
    return VeskApp::instance()->saveManager()->createSaveJob(
        source, source->firstFrValue()->variant().toInt(), frames, SaveManager::FileDest, filmFormat(codec),
        codec, FilmFrameRate, FilmQuality, u"film"_s, folder);
}

/** Reads, decodes, adjusts, converts and encodes each frame before the next. */
void makePlainFilm(VeskFile *source, const QString &path, qint64 frames, Util::Codec codec,
                   const QString &folder)
{
    const FrameGeometry geometry = frameGeometry(*source);
    QFile file(path);
    VideoEncoder encoder(FileNameTemplate(folder, u"film"_s, filmFormat(codec), 0).filePath(0, {}),
                         geometry.width, geometry.height, geometry.metaSize, filmFormat(codec), codec,
                         FilmFrameRate, FilmQuality, nullptr);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(24))
        stop(u"the native file does not open"_s);
    const auto dataOffset = qFromLittleEndian<qint64>(file.read(8).constData());
    if (!file.seek(dataOffset) || !encoder.open())
        stop(u"the film cannot be begun"_s);
    const ImgAdjData adj = source->imgAdjModel()->data();
    VeskFrame frame(&adj, nullptr);
    frame.decodeInPlace();
    frame.decodeFor(DevelopedFrame::Use::SavedVideo);
    for (qint64 i = 0; i < frames; ++i) {
        if (!frame.set(file.read(geometry.frameSize()), geometry.width, geometry.height, geometry.imgSize(),
                       geometry.metaSize, 0) ||
            encoder.write(frame.marked()) < 0)
            stop(u"a frame cannot be encoded"_s);
    }
    if (!encoder.close())
        stop(u"the film cannot be ended"_s);
}

void measure(const std::function<SaveJob *()> &begin)
{
    QElapsedTimer timer;
    timer.start();
    waitFor(begin(), SaveJob::Done);
    print({{"seconds", double(timer.nsecsElapsed()) * 1e-9}, {"peak_bytes", peakBytes()}});
}

/** Cancels the job as soon as a part of it is written. */
void cancelInTheMiddle(SaveJob *job)
{
    waitFor(job, &SaveJob::progressChanged, "a save does not begin", [&] { return job->progress() > 0.0; });
    if (job->state() != SaveJob::Saving)
        stop(u"a save that was to be cancelled ended in state %1"_s.arg(job->state()));
    job->cancel();
}

void measureWindow(char **argv, const QString &address, qint64 frames, const QString &folder,
                   const QString &path)
{
    int argc = 1;
    VeskApp app(argc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s);
    app.stopBroadcast();
    QQmlApplicationEngine engine;
    loadInterface(app, engine);
    app.connectCamera(address);
    auto *camera = qobject_cast<Camera *>(app.veskObjects().first());
    Take *take = takeOf(*camera);
    const auto file = openFile(path);
    settle(1s);

    double stall = 0.0;
    double filmStall = 0.0;
    Pulse pulse;
    pulse.start();
    for (int round = 0; round < 3; ++round) {
        cancelInTheMiddle(save(take, frames, Util::FormatVesk, u"cancelled"_s, folder));
        SaveJob *native = save(take, frames, Util::FormatVesk, u"native"_s, folder);
        cancelInTheMiddle(save(file.get(), file->frCntValue()->variant().toInt(), Util::FormatTiff,
                               u"cancelled_<fr>"_s, folder));
        SaveJob *images = save(file.get(), file->frCntValue()->variant().toInt(), Util::FormatTiff,
                               u"image_<fr>"_s, folder);
        settle(20ms);
        stall = std::max(stall, pulse.takeLongestS());
        SaveJob *film = saveFilm(file.get(), FilmFrames, Util::CodecAV1_YUV420P, folder);
        settle(20ms);
        filmStall = std::max(filmStall, pulse.takeLongestS());
        waitFor(native, SaveJob::Done);
        waitFor(images, SaveJob::Done);
        waitFor(film, SaveJob::Done);
        stall = std::max(stall, pulse.takeLongestS());
    }
    print({{"stall_s", stall}, {"film_s", filmStall}, {"peak_bytes", peakBytes()}});
}
} // namespace

int main(int argc, char *argv[])
{
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    const QString what = words.value(0);
    const bool known = (what == u"native" && words.size() == 4) || (what == u"slow" && words.size() == 5) ||
                       (what == u"images" && words.size() == 4) || (what == u"window" && words.size() == 5) ||
                       ((what == u"film" || what == u"plain") && words.size() == 5);
    if (!known)
        stop(
            u"usage: bench_save native|slow|images|film|plain|window SOURCE FRAMES FOLDER [RATE|CODEC|FILE]"_s);
    const qint64 frames = words[2].toLongLong();
    const QString &folder = words[3];
    if (what == u"window") {
        measureWindow(argv, words[1], frames, folder, words[4]);
        return 0;
    }
    const Application application(argv);
    if (what == u"images") {
        const auto file = openFile(words[1]);
        // The first image of a program loads the plugins for images. What ffmpeg loads at its start is not
        // measured either.
        if (!QImageWriter::supportedImageFormats().contains("tiff"))
            stop(u"there is no plugin for TIFF"_s);
        measure([&] { return save(file.get(), frames, Util::FormatTiff, u"<fr>"_s, folder); });
        return 0;
    }
    if (what == u"film" || what == u"plain") {
        const auto file = openFile(words[1]);
        const auto codec = Util::Codec(words[4].toInt());
        if (what == u"film") {
            measure([&] { return saveFilm(file.get(), frames, codec, folder); });
            return 0;
        }
        QElapsedTimer timer;
        timer.start();
        makePlainFilm(file.get(), words[1], frames, codec, folder);
        print({{"seconds", double(timer.nsecsElapsed()) * 1e-9}, {"peak_bytes", peakBytes()}});
        return 0;
    }
    Camera camera(QHostAddress(words[1]), nullptr);
    camera.connectCamera();
    Take *take = takeOf(camera);
    if (what == u"native") {
        measure([&] { return save(take, frames, Util::FormatVesk, u"ours"_s, folder); });
        return 0;
    }
    SlowJob job(take, frames, folder, words[4].toDouble() * 1e6);
    measure([&] {
        camera.fileSaveJobQueue()->enqueue(&job);
        return &job;
    });
}
