// How long the event loop stands still while a long listing of a camera's drive is filled in and sorted.
// Prints rows for tools/bench.py, each the part of a stall that the operator would notice.

#include "camera/camera.h"
#include "take/ssd_ls_list_model.h"
#include "take/ssd_ls_sort_proxy_model.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{
constexpr int Entries = 10000;
constexpr int Rounds = 15;
constexpr double StallMs = 50.0;

/** In no order by any column, and with many equal sizes and names that differ late. */
QByteArray reply()
{
    QJsonArray list;
    for (int i = 0; i < Entries; ++i)
        list.append(QJsonObject{{"name", u"Crash test run %1.vesk"_s.arg(i * 7919 % 10007)},
                                {"size", double(i * 31 % 500) * 1e6},
                                {"time", 1.7e9 + double(i) * 12377.0 - double(i % 7) * 1e8}});
    return QJsonDocument(QJsonObject{{"ssd-ls", list}}).toJson(QJsonDocument::Compact);
}

double medianMs(const std::function<void()> &step)
{
    QList<double> times;
    for (int round = 0; round < Rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        step();
        times.append(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[Rounds / 2];
}

QJsonObject row(const QString &what, double ms)
{
    std::fprintf(stderr, "%s: %.1f ms\n", qPrintable(what), ms);
    return {{"what", what}, {"ratio", ms / StallMs}, {"bound", 1.0}, {"sense", "at_most"}};
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication app(argc, argv);
    QObject camera;
    SsdLsListModel list(&camera);
    SsdLsSortProxyModel shown(&list, &camera);
    const QByteArray bytes = reply();
    // A view asks for rows at once, which makes the proxy sort.
    const auto look = [&shown] {
        if (shown.index(shown.rowCount() - 1, 0).data(SsdLsListModel::ItemRole).isNull())
            qFatal("the last row is empty");
    };
    const auto fill = [&] {
        const QJsonObject document = QJsonDocument::fromJson(bytes).object();
        list.fill(Camera::ssdLsEntries(document.value("ssd-ls"_L1).toArray(), &camera));
        look();
    };
    fill();

    QJsonArray rows;
    rows.append(row(u"Listing of 10000 recordings filled anew, part of 50 ms"_s, medianMs(fill)));
    using Proxy = SsdLsSortProxyModel;
    const std::pair<const char *, int> columns[] = {{"names", Proxy::NameSortAscending},
                                                    {"sizes", Proxy::SizeSortAscending},
                                                    {"dates", Proxy::DateSortAscending}};
    for (const auto &[column, mode] : columns) {
        const double up = medianMs([&] {
            shown.setSortMode(Proxy::NoSort);
            shown.setSortMode(mode);
            look();
        });
        const double down = medianMs([&] {
            shown.setSortMode(Proxy::NoSort);
            shown.setSortMode(mode + 1);
            look();
        });
        rows.append(
            row(u"Listing of 10000 recordings sorted by %1, part of 50 ms"_s.arg(QLatin1StringView(column)),
                std::max(up, down)));
    }
    std::puts(QJsonDocument(rows).toJson().constData());
}
