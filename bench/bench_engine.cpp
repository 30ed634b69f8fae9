#include "app/vesk_app.h"
#include "image/img_adj_util.h"
#include "take/vesk_frame.h"
#include "tests/image/plain_sequence.h"
#include "tests/image/test_frames.h"

#include <QStandardPaths>

#include <benchmark/benchmark.h>

/**
 * The image engine against the plain sequence of library calls, whose buffers are kept from frame to frame as
 * ours are. Every benchmark goes through the same frames; results are compared once before the clock runs, as
 * a ratio between different pictures would mean nothing.
 */
namespace
{
constexpr int FrameCount = 8;

using FrameMaker = QByteArray (*)(int width, int height, quint32 seed);

struct Frames {
    Frames(FrameMaker make, int frameWidth, int frameHeight, int cfa)
        : width(frameWidth), height(frameHeight), adj(TestFrames::strongAdjustment(cfa))
    {
        for (quint32 seed = 0; seed < FrameCount; ++seed)
            records.append(TestFrames::record(make(width, height, seed)));
    }

    bool set(VeskFrame &frame, qsizetype i) const
    {
        const QByteArray &record = records[i % FrameCount];
        return frame.set(record, quint16(width), quint16(height), quint32(record.size() - 32), 32, 0);
    }

    void set(PlainSequence &plain, qsizetype i) const
    {
        plain.set(adj, QByteArrayView(records[i % FrameCount]).sliced(32), width, height);
    }

    int width;
    int height;
    ImgAdjData adj;
    QList<QByteArray> records;
};

bool samePicture(const QImage &picture, const QByteArray &bytes)
{
    return picture.sizeInBytes() == bytes.size() &&
           std::equal(bytes.cbegin(), bytes.cend(), reinterpret_cast<const char *>(picture.constBits()));
}

bool sameResult(const Frames &frames)
{
    VeskFrame frame(&frames.adj, nullptr);
    PlainSequence plain;
    for (qsizetype i = 0; i < FrameCount; ++i) {
        frames.set(plain, i);
        if (!frames.set(frame, i) || frame.raw() != plain.raw() || frame.clean() != plain.clean() ||
            frame.marked() != plain.marked() || !samePicture(frame.image(false), plain.picture()))
            return false;
    }
    return true;
}

void ours(benchmark::State &state, FrameMaker make, int width, int height, int cfa)
{
    const Frames frames(make, width, height, cfa);
    if (!sameResult(frames)) {
        state.SkipWithError("the results differ from the plain sequence");
        return;
    }
    VeskFrame frame(&frames.adj, nullptr);
    // The screen and the histogram hold on to what they were given last.
    QImage shown;
    QList<quint16> counted;
    qsizetype i = 0;
    for (auto _ : state) {
        frames.set(frame, i++);
        shown = frame.image(false);
        counted = frame.clean();
        benchmark::DoNotOptimize(shown.constBits());
    }
}

void plain(benchmark::State &state, FrameMaker make, int width, int height, int cfa)
{
    const Frames frames(make, width, height, cfa);
    PlainSequence sequence;
    qsizetype i = 0;
    for (auto _ : state) {
        frames.set(sequence, i++);
        benchmark::DoNotOptimize(sequence.picture().constData());
    }
}

QList<QList<quint16>> cleanImages(const Frames &frames)
{
    QList<QList<quint16>> images;
    VeskFrame frame(&frames.adj, nullptr);
    for (qsizetype i = 0; i < FrameCount; ++i) {
        frames.set(frame, i);
        images.append(frame.clean());
    }
    return images;
}

void histogramOurs(benchmark::State &state, FrameMaker make)
{
    const Frames frames(make, 640, 480, ImgAdjUtil::CfaRGGB);
    const auto images = cleanImages(frames);
    const ImgAdjUtil *util = VeskApp::instance()->imgAdjUtil();
    PlainSequence sequence;
    for (const auto &image : images) {
        if (util->renderHistogram(image, 640, 480, 128, 64, 256) !=
            sequence.histogram(image, 640, 480, 128, 64, 256)) {
            state.SkipWithError("the pictures differ from the plain sequence");
            return;
        }
    }
    qsizetype i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(util->renderHistogram(images[i++ % FrameCount], 640, 480, 128, 64, 256));
}

void histogramPlain(benchmark::State &state, FrameMaker make)
{
    const Frames frames(make, 640, 480, ImgAdjUtil::CfaRGGB);
    const auto images = cleanImages(frames);
    PlainSequence sequence;
    qsizetype i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(sequence.histogram(images[i++ % FrameCount], 640, 480, 128, 64, 256));
}

void registerPair(const char *name, void (*run)(benchmark::State &, FrameMaker, int, int, int),
                  FrameMaker make, int width, int height, int cfa)
{
    benchmark::RegisterBenchmark(name, [=](benchmark::State &state) { run(state, make, width, height, cfa); })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

void registerHistogram(const char *name, void (*run)(benchmark::State &, FrameMaker), FrameMaker make)
{
    benchmark::RegisterBenchmark(name, [=](benchmark::State &state) { run(state, make); })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

void registerAll()
{
    using namespace TestFrames;
    constexpr int rggb = ImgAdjUtil::CfaRGGB;
    constexpr int mono = ImgAdjUtil::CfaMono;
    registerPair("BM_ColorScene", ours, scene, 640, 480, rggb);
    registerPair("BM_ColorScenePlain", plain, scene, 640, 480, rggb);
    registerPair("BM_ColorNoise", ours, noise, 640, 480, rggb);
    registerPair("BM_ColorNoisePlain", plain, noise, 640, 480, rggb);
    registerPair("BM_MonoScene", ours, scene, 1280, 1024, mono);
    registerPair("BM_MonoScenePlain", plain, scene, 1280, 1024, mono);
    registerPair("BM_MonoNoise", ours, noise, 1280, 1024, mono);
    registerPair("BM_MonoNoisePlain", plain, noise, 1280, 1024, mono);
    registerHistogram("BM_HistogramScene", histogramOurs, scene);
    registerHistogram("BM_HistogramScenePlain", histogramPlain, scene);
    registerHistogram("BM_HistogramNoise", histogramOurs, noise);
    registerHistogram("BM_HistogramNoisePlain", histogramPlain, noise);
}
} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Settings of a test, not of the user.
    QStandardPaths::setTestModeEnabled(true);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    int appArgc = 1;
    VeskApp app(appArgc, argv, QStringLiteral("VESK"), QStringLiteral("10.0"),
                QStringLiteral("morvane.example"), QStringLiteral("Morvane"));
    app.stopBroadcast();
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
