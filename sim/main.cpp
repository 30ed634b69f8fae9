#include "sim/camera.h"
#include "sim/options.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

int signalSockets[2];

// A handler may do next to nothing; the byte wakes the event loop.
void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(signalSockets[0], &byte, 1);
}

void say(FILE *file, const QString &text)
{
    std::fprintf(file, "q4sim: %s\n", qPrintable(text));
    std::fflush(file);
}

QString description(const q4sim::Config &config)
{
    const QStringList list =
        config.resolutions.isEmpty() ? q4sim::defaultResolutions(config.cfa) : config.resolutions;
    constexpr const char *patterns[] = {"mono", "RGGB", "GBRG"};
    return QStringLiteral("camera \"%1\", serial %2, %3 %4 at %5 fps, on %6 port %7")
        .arg(config.name, config.serial, list.first(), QLatin1StringView(patterns[config.cfa]))
        .arg(config.frameRate)
        .arg(config.address.toString())
        .arg(config.port);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Simulates networked high-speed cameras, one on each address. Faults are set and the requests\n"
        "received are read over HTTP: see /sim/fault, /sim/log, /sim/state, /sim/force, /sim/take and "
        "/sim/hardware\n"
        "in sim/control.h. Without options the camera has everything; --bare is one with nothing."));
    parser.addHelpOption();
    q4sim::addOptions(parser);
    parser.process(app);
    if (!parser.positionalArguments().isEmpty()) {
        say(stderr, QStringLiteral("unexpected \"%1\"").arg(parser.positionalArguments().first()));
        return 1;
    }

    QString error;
    const QList<q4sim::Config> configs = q4sim::readOptions(parser, &error);
    if (!error.isEmpty()) {
        say(stderr, error);
        return 1;
    }
    std::vector<std::unique_ptr<q4sim::Camera>> cameras;
    for (const q4sim::Config &config : configs) {
        cameras.push_back(std::make_unique<q4sim::Camera>(config));
        if (error = cameras.back()->listen(); !error.isEmpty()) {
            say(stderr, error);
            return 1;
        }
    }

    if (socketpair(AF_UNIX, SOCK_STREAM, 0, signalSockets) != 0) {
        say(stderr, QStringLiteral("cannot watch for signals"));
        return 1;
    }
    QSocketNotifier notifier(signalSockets[1], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    std::signal(SIGTERM, onSignal);
    std::signal(SIGINT, onSignal);
    for (const auto &camera : cameras)
        say(stdout, description(camera->config()));
    return app.exec();
}
