#pragma once

#include "app/vesk_app.h"
#include "tests/support/thread_sanitizer.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

/** Points settings and data of this process to a folder of its own, before the application exists. */
class TestFolders
{
public:
    TestFolders()
    {
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            qputenv(name, m_dir.path().toLocal8Bit());
    }

private:
    QTemporaryDir m_dir;
};

/** main() of a test that runs inside the real application object, with a network manager of its own. */
template <class Test> int runVeskTest(int argc, char *argv[])
{
    const TestFolders folders;
    prepareThreadSanitizer();
    int appArgc = 1;
    VeskApp app(appArgc, argv, QStringLiteral("VESK"), QStringLiteral("10.0"),
                QStringLiteral("morvane.example"), QStringLiteral("Morvane"));
    app.stopBroadcast();
    QNetworkAccessManager manager;
    app.set_networkAccessManager(&manager);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#define VESK_TEST_MAIN(Test)                                                                                 \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        return runVeskTest<Test>(argc, argv);                                                                \
    }
