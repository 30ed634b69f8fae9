// Frames searched in a second, and the same frames fetched and adjusted one after the other in a plain loop,
// in turn. Prints one JSON object with the rates of each round.
//
//   bench_search ADDRESS FRAMES ROUNDS     the camera there has a still take 1 of that many frames or more

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "image/img_search.h"
#include "take/raw_frame.h"
#include "take/saved_take_model.h"
#include "take/take.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
void stop(const char *why)
{
    std::fprintf(stderr, "bench_search: %s\n", why);
    std::exit(1);
}

/** Runs the event loop until the signal comes. */
template <class Sender, class Signal> void waitFor(const Sender *sender, Signal signal, const char *what)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(60s, &loop, [what] { stop(what); });
    loop.exec();
}

double perSecond(qint64 frames, const QElapsedTimer &timer)
{
    return double(frames) * 1e9 / double(timer.nsecsElapsed());
}

/** Rate of the plain loop over the frames behind the first one. */
double fetchAndAdjust(Take *take, qint64 frames)
{
    VeskFrame adjusted(&take->imgAdjModel()->data(), nullptr);
    QElapsedTimer timer;
    timer.start();
    for (qint64 i = 0; i <= frames; ++i) {
        RawFrame raw;
        take->getFrame(&raw, take->aFr() + i);
        if (raw.data().isEmpty())
            waitFor(&raw, &RawFrame::initFinished, "a frame does not come");
        if (!adjusted.set(&raw))
            stop("a frame cannot be adjusted");
    }
    return perSecond(frames + 1, timer);
}

/** Rate of a search from the first frame that finds nothing and stops at the end of the range. */
double search(Take *take, qint64 frames)
{
    take->setFr(take->aFr());
    take->setBFr(take->aFr() + frames);
    take->imgSearch()->setStep(1);
    QElapsedTimer timer;
    timer.start();
    take->imgSearch()->start(true);
    waitFor(take->imgSearch(), &ImgSearch::stateChanged, "the search does not end");
    if (take->fr() != take->bFr())
        stop("the search ended before the range");
    return perSecond(frames + 1, timer);
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4)
        stop("usage: bench_search ADDRESS FRAMES ROUNDS");
    const QString address = QString::fromLocal8Bit(argv[1]);
    const qint64 frames = std::atoll(argv[2]);
    const int rounds = std::atoi(argv[3]);
    int appArgc = 1;
    VeskApp app(appArgc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s);
    app.stopBroadcast();
    QNetworkAccessManager manager;
    app.set_networkAccessManager(&manager);

    Camera camera(QHostAddress(address), nullptr);
    camera.connectCamera();
    waitFor(&camera, &Camera::cameraConnected, "the camera does not connect");
    if (camera.savedTakes()->count() != 1)
        stop("the camera has no take");
    auto *take = qobject_cast<Take *>(camera.takes()->get(0));
    if (!take->valuesInit())
        waitFor(take, &PlaybackVeskObject::valuesInitFinished, "the take has no description");
    take->pause();

    QJsonArray plain;
    QJsonArray searched;
    for (int round = 0; round < rounds; ++round) {
        plain.append(fetchAndAdjust(take, frames));
        searched.append(search(take, frames));
    }
    std::puts(QJsonDocument(QJsonObject{{"plain", plain}, {"search", searched}}).toJson().constData());
}
