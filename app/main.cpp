#include "app/interface.h"
#include "app/log.h"
#include "app/vesk_app.h"

#include <QDebug>
#include <QQmlApplicationEngine>
#include <QThread>

#include <csignal>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    std::signal(SIGSEGV, segfaultHandler);
    VeskApp app(argc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s);
    QQmlApplicationEngine engine;
    QThread::currentThread()->setObjectName(u"Main Thread"_s);
    loadInterface(app, engine);
    qDebug() << "app.exec()";
    return QCoreApplication::exec();
}
