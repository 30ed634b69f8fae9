// A minimal window of the same controls, linked with the same libraries: the peer of the program's start.

#include "app/util.h"
#include "image/img_adj_util.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    // Keeps the image library among those that are loaded.
    if (ImgAdjUtil::openCvVersion().isEmpty())
        return 1;
    engine.load(QUrl(QStringLiteral("qrc:/bench/bench_window.qml")));
    return QGuiApplication::exec();
}
