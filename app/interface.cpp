#include "app/interface.h"

#include "app/fonts.h"
#include "app/vesk_app.h"
#include "image/img_adj_util.h"

#include <QDebug>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQmlContext>

using namespace Qt::StringLiterals;

// Generated with the QML module Vesk: registers the classes for the views.
void qml_register_types_Vesk();

static void logLibraryVersions()
{
    qDebug() << "FFmpeg:";
    for (const char *version : {"Lavu59.39.100", "Lavc61.19.100", "Lavf61.7.100", "Lavd61.3.100",
                                "Lavfi10.4.100", "SwS8.3.100", "SwR5.3.100"})
        qDebug().noquote() << u"  "_s + QLatin1StringView(version);
    qDebug().noquote() << u"OpenCV: "_s + ImgAdjUtil::openCvVersion();
}

void loadInterface(VeskApp &app, QQmlApplicationEngine &engine)
{
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
}
