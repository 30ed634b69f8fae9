#pragma once

#include "tests/support/vesk_test_main.h"

#include <QTemporaryFile>

/**
 * main() of a test of the views: like runVeskTest, on a screen that the window fits on, and with hovering, of
 * which the platform without a display says that there is none.
 */
template <class Test> int runViewTest(int argc, char *argv[])
{
    QTemporaryFile screens;
    if (!screens.open())
        return 1;
    // A denser display is as large in the window's own pixels.
    const double scale = qMax(1.0, qEnvironmentVariable("QT_SCALE_FACTOR").toDouble());
    screens.write(QStringLiteral(R"({"screens": [{"name": "test", "x": 0, "y": 0, "width": %1, "height": %2,)"
                                 R"( "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})")
                      .arg(1920 * scale)
                      .arg(1080 * scale)
                      .toLatin1());
    screens.close();
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen")
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toLocal8Bit());
    qputenv("QT_QUICK_CONTROLS_HOVER_ENABLED", "1");
    return runVeskTest<Test>(argc, argv);
}

#define VIEW_TEST_MAIN(Test)                                                                                 \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        return runViewTest<Test>(argc, argv);                                                                \
    }
