// The listing of a camera's drive in the window: opened, sorted by each column, scrolled from end to end.
// Prints one JSON object of the longest times, in seconds, in which the GUI thread answered nothing
// meanwhile.
//
//   bench_listing ADDRESS ENTRIES

#include "app/interface.h"
#include "app/vesk_app.h"
#include "bench/pulse.h"
#include "camera/camera.h"
#include "take/ssd_ls_sort_proxy_model.h"

#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>

#include <cstdio>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr int Rounds = 3;
constexpr int Steps = 100;

void stop(const char *why)
{
    std::fprintf(stderr, "bench_listing: %s\n", why);
    std::exit(1);
}

void waitUntil(const std::function<bool()> &holds, const char *what)
{
    for (int waited = 0; waited < 1000; ++waited) {
        if (holds())
            return;
        settle(10ms);
    }
    stop(what);
}

/** The list of the dialog, as soon as there is one. */
QQuickItem *findList(QQuickItem *item)
{
    if (item->inherits("QQuickListView"))
        return item;
    for (QQuickItem *child : item->childItems()) {
        if (QQuickItem *list = findList(child))
            return list;
    }
    return nullptr;
}

QQuickItem *shownList()
{
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        auto *shown = qobject_cast<QQuickWindow *>(window);
        if (shown && shown->isVisible() && shown->title() == u"Open SSD Take")
            return findList(shown->contentItem());
    }
    return nullptr;
}

/** From end to end, as far at once as a page and a little more. */
void scroll(QQuickItem *list)
{
    const double length = list->property("contentHeight").toDouble() - list->height();
    for (int step = 0; step <= Steps; ++step) {
        list->setProperty("contentY", length * step / Steps);
        settle(16ms);
    }
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3)
        stop("usage: bench_listing ADDRESS ENTRIES");
    const QString address = QString::fromLocal8Bit(argv[1]);
    const int entries = QByteArray(argv[2]).toInt();
    VeskApp app(argc, argv, u"VESK"_s, u"10.0"_s, u"morvane.example"_s, u"Morvane"_s);
    app.stopBroadcast();
    QQmlApplicationEngine engine;
    loadInterface(app, engine);
    app.connectCamera(address);
    auto *camera = qobject_cast<Camera *>(app.veskObjects().first());
    waitUntil([&] { return camera->connected(); }, "the camera cannot be reached");
    QQmlComponent component(&engine);
    component.loadFromModule("Vesk", "SsdTakeOpenLoader");
    const std::unique_ptr<QObject> loader(
        component.createWithInitialProperties({{u"camera"_s, QVariant::fromValue(camera)}}));
    if (!loader)
        stop(qPrintable(component.errorString()));
    settle(1s);

    double opened = 0.0;
    double sorted = 0.0;
    double scrolled = 0.0;
    Pulse pulse;
    pulse.start();
    for (int round = 0; round < Rounds; ++round) {
        pulse.takeLongestS();
        QMetaObject::invokeMethod(loader.get(), "list");
        SsdLsSortProxyModel *shown = camera->ssdLsEntries();
        waitUntil([&] { return shown->rowCount() == entries && shownList(); }, "no listing comes");
        QQuickItem *list = shownList();
        settle(500ms);
        opened = std::max(opened, pulse.takeLongestS());
        using Proxy = SsdLsSortProxyModel;
        for (const int mode :
             {Proxy::SizeSortAscending, Proxy::SizeSortDescending, Proxy::DateSortAscending,
              Proxy::DateSortDescending, Proxy::NameSortDescending, Proxy::NameSortAscending}) {
            shown->setSortMode(mode);
            settle(100ms);
        }
        sorted = std::max(sorted, pulse.takeLongestS());
        scroll(list);
        scrolled = std::max(scrolled, pulse.takeLongestS());
        list->window()->close();
        waitUntil([&] { return !shownList(); }, "the listing cannot be closed");
        // The end of the window, and the picture of what lay behind it.
        settle(500ms);
    }
    const QJsonObject result = {{"open_s", opened}, {"sort_s", sorted}, {"scroll_s", scrolled}};
    std::puts(QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
}
