#include "tests/support/vesk_test_main.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QtQuickTest>

// Generated with the QML module Vesk: registers the classes for the views.
void qml_register_types_Vesk();

/** Gives the engine of the test files what the program gives its own. */
class ControlsSetup : public QObject
{
    Q_OBJECT

public slots:
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->rootContext()->setContextProperty(QStringLiteral("veskApp"), VeskApp::instance());
    }
};

int main(int argc, char *argv[])
{
    const TestFolders folders;
    // The platform without a display says that nothing hovers; the desktops of the users do.
    qputenv("QT_QUICK_CONTROLS_HOVER_ENABLED", "1");
    int appArgc = 1;
    VeskApp app(appArgc, argv, QStringLiteral("VESK"), QStringLiteral("10.0"),
                QStringLiteral("morvane.example"), QStringLiteral("Morvane"));
    app.stopBroadcast();
    qml_register_types_Vesk();
    ControlsSetup setup;
    return quick_test_main_with_setup(argc, argv, "controls", QUICK_TEST_SOURCE_DIR, &setup);
}

#include "tst_controls.moc"
