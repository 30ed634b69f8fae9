#include "app/fonts.h"
#include "app/log.h"
#include "app/vesk_app.h"
#include "image/img_adj_util.h"

#include <QDebug>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QThread>

#include <csignal>

using namespace Qt::StringLiterals;

// Generated with the QML module Vesk: registers the classes for the views.
void qml_register_types_Vesk();

static void logLibraryVersions()
{
    qDebug() << "FFmpeg:";
    for (const char *version : {"Lavu59.39.100", "Lavc61.19.100", "Lavf61.7.100", "Lavd61.3.100",
                                "Lavfi10.4.100", "SwS8.3.100", "SwR5.3.100"})
        qDebug().noquote() << QStringLiteral("  ") + QLatin1StringView(version);
    qDebug().noquote() << QStringLiteral("OpenCV: ") + ImgAdjUtil::openCvVersion();
}

int main(int argc, char *argv[])
{
    std::signal(SIGSEGV, segfaultHandler);
    VeskApp app(argc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s);
    QQmlApplicationEngine engine;
    QThread::currentThread()->setObjectName(u"Main Thread"_s);
    initFonts(app);
    logLibraryVersions();

    qDebug() << "set_networkAccessManager";
    app.set_networkAccessManager(engine.networkAccessManager());
    app.setWindowIcon(QIcon(u":/ORKAM.png"_s));
    qDebug() << "register types";
    qml_register_types_Vesk();
    qDebug() << "setContextProperty";
    engine.rootContext()->setContextProperty(u"veskApp"_s, &app);

    const QUrl root(u"qrc:/main.qml"_s);
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreated, &app,
        [root](QObject *object, const QUrl &url) {
            if (object || url != root)
                return;
            qCritical() << "QQmlApplicationEngine load failed";
            QCoreApplication::exit(-1);
        },
        Qt::QueuedConnection);
    qDebug() << "engine.load()";
    engine.load(root);
    qDebug() << "app.exec()";
    return QCoreApplication::exec();
}
