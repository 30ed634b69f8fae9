// Whole-program measurements of one process: prints one JSON object with what it used.
//
//   bench_program idle vesk|plain SECONDS ADDRESS...   cameras connected, none selected
//   bench_program live SECONDS ADDRESS                 the camera's live picture
//
// "plain" fetches and parses the same documents at the same pace, and does nothing else.

#include "app/interface.h"
#include "app/vesk_app.h"
#include "camera/camera.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlApplicationEngine>
#include <QTimer>

#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
/** Processor time in seconds of the process, or of the calling thread. */
double cpuSeconds(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

void print(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

/** Lets things settle, then measures for a while and hands over to the end. */
void measure(int seconds, std::function<void()> begin, std::function<void()> end)
{
    QTimer::singleShot(2s, qApp, [=] {
        begin();
        QTimer::singleShot(std::chrono::seconds(seconds), qApp, [end] {
            end();
            QCoreApplication::quit();
        });
    });
}

void measureIdle(int seconds, const std::function<int()> &polls)
{
    auto startCpu = std::make_shared<double>();
    auto startPolls = std::make_shared<int>();
    measure(
        seconds,
        [=] {
            *startCpu = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
            *startPolls = polls();
        },
        [=] {
            print({{"cpu_s", cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - *startCpu},
                   {"polls", polls() - *startPolls}});
        });
}

int runPlain(int argc, char **argv, int seconds, const QStringList &addresses)
{
    QGuiApplication app(argc, argv);
    QNetworkAccessManager manager;
    int polls = 0;
    std::vector<std::unique_ptr<QTimer>> timers;
    for (const QString &address : addresses) {
        const QUrl url(u"http://"_s + address);
        timers.push_back(std::make_unique<QTimer>());
        QObject::connect(timers.back().get(), &QTimer::timeout, &app, [&, url] {
            QNetworkReply *reply = manager.get(QNetworkRequest(url));
            QObject::connect(reply, &QNetworkReply::finished, &app, [&polls, reply] {
                polls += QJsonDocument::fromJson(reply->readAll()).isObject();
                reply->deleteLater();
            });
        });
        timers.back()->start(250ms);
    }
    measureIdle(seconds, [&polls] { return polls; });
    return QCoreApplication::exec();
}

/** The program as it starts, without looking for cameras. */
struct Program {
    explicit Program(char **argv) : app(argc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s)
    {
        app.stopBroadcast();
        loadInterface(app, engine);
    }

    int argc = 1;
    VeskApp app;
    QQmlApplicationEngine engine;
};

int runIdle(char **argv, int seconds, const QStringList &addresses)
{
    Program program(argv);
    VeskApp &app = program.app;
    int polls = 0;
    for (const QString &address : addresses)
        app.connectCamera(address);
    for (VeskObject *source : app.veskObjects())
        QObject::connect(qobject_cast<Camera *>(source), &Camera::valuesPolled, &app, [&polls] { ++polls; });
    app.setNullVeskObject();
    QObject::connect(&app, &VeskApp::selectedVeskObjectChanged, &app, [] {
        std::fputs("bench_program: a camera was selected\n", stderr);
        QCoreApplication::exit(1);
    });
    measureIdle(seconds, [&polls] { return polls; });
    return QCoreApplication::exec();
}

int runLive(char **argv, int seconds, const QString &address)
{
    Program program(argv);
    VeskApp &app = program.app;
    app.connectCamera(address);
    int frames = 0;
    QObject::connect(app.selectedVeskObject()->imgFrame(), &ImgFrame::imageChanged, &app, [&] { ++frames; });
    int startFrames = 0;
    double startCpu = 0.0;
    QElapsedTimer timer;
    measure(
        seconds,
        [&] {
            startFrames = frames;
            startCpu = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
            timer.start();
        },
        [&] {
            const QSize size = app.selectedVeskObject()->imgFrame()->image().size();
            print({{"frames", frames - startFrames},
                   {"width", size.width()},
                   {"height", size.height()},
                   {"elapsed_s", double(timer.nsecsElapsed()) * 1e-9},
                   {"gui_cpu_s", cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - startCpu}});
        });
    return QCoreApplication::exec();
}
} // namespace

int main(int argc, char *argv[])
{
    const QStringList words = [&] {
        QStringList list;
        for (int i = 1; i < argc; ++i)
            list << QString::fromLocal8Bit(argv[i]);
        return list;
    }();
    if (words.size() >= 4 && words[0] == "idle"_L1 && words[1] == "plain"_L1)
        return runPlain(argc, argv, words[2].toInt(), words.mid(3));
    if (words.size() >= 4 && words[0] == "idle"_L1 && words[1] == "vesk"_L1)
        return runIdle(argv, words[2].toInt(), words.mid(3));
    if (words.size() == 3 && words[0] == "live"_L1)
        return runLive(argv, words[1].toInt(), words[2]);
    std::fputs("usage: bench_program idle vesk|plain SECONDS ADDRESS... | live SECONDS ADDRESS\n", stderr);
    return 2;
}
