#pragma once

#include "app/vesk_app.h"

#include <QTemporaryDir>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/** The application object that most of the program needs, without a window, a log and the user's settings. */
class FuzzApplication
{
public:
    /** Made with the first input, and never destroyed: a fuzzer does not return from main(). */
    static FuzzApplication &instance()
    {
        static auto *const application = new FuzzApplication;
        return *application;
    }

    /** Deletes what was to be deleted later. */
    void tidy() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

private:
    FuzzApplication()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            qputenv(name, m_folders.path().toLocal8Bit());
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_app = new VeskApp(m_argc, m_argv, QStringLiteral("VESK"), QStringLiteral("10.0"),
                            QStringLiteral("morvane.example"), QStringLiteral("Morvane"));
        m_app->stopBroadcast();
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    }

    QTemporaryDir m_folders;
    int m_argc = 1;
    char m_name[5] = "fuzz";
    char *m_argv[2] = {m_name, nullptr};
    VeskApp *m_app = nullptr;
};

/** A result that no input may bring about ends the process, as a fault of memory does. */
inline void require(bool holds)
{
    if (!holds)
        __builtin_trap();
}
