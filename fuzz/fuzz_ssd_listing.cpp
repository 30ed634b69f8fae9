#include "camera/camera.h"
#include "fuzz/fuzz_application.h"
#include "take/ssd_ls_list_model.h"
#include "take/ssd_ls_sort_proxy_model.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace
{
/** Entries that a plain count of the elements gives. */
qsizetype entryCount(const QJsonArray &elements)
{
    return std::count_if(elements.begin(), elements.end(),
                         [](const QJsonValue &element) { return element.isString() || element.isObject(); });
}

const SsdLsEntry &entryAt(const QAbstractItemModel &shown, int row)
{
    return *shown.index(row, 0).data(SsdLsListModel::ItemRole).value<SsdLsEntry *>();
}

/** The rules of each order, written once more: below 0 when a stands before b. */
int compared(int mode, const SsdLsEntry &a, const SsdLsEntry &b)
{
    const int names = a.name().compare(b.name(), Qt::CaseInsensitive);
    const auto order = [names](qlonglong left, qlonglong right) {
        return left == right ? names : (left < right ? -1 : 1);
    };
    switch (mode) {
    case SsdLsSortProxyModel::NameSortAscending:
        return names;
    case SsdLsSortProxyModel::NameSortDescending:
        return -names;
    case SsdLsSortProxyModel::SizeSortAscending:
        return order(a.size(), b.size());
    case SsdLsSortProxyModel::SizeSortDescending:
        return a.size() == b.size() ? names : order(b.size(), a.size());
    case SsdLsSortProxyModel::DateSortAscending:
        return order(a.time(), b.time());
    default:
        return a.time() == b.time() ? names : order(b.time(), a.time());
    }
}

void sortByEachColumn(SsdLsSortProxyModel &shown, int rows)
{
    for (int mode = SsdLsSortProxyModel::DateSortDescending; mode >= SsdLsSortProxyModel::NoSort; --mode) {
        shown.setSortMode(mode);
        require(shown.rowCount() == rows);
        for (int row = 1; row < rows && mode != SsdLsSortProxyModel::NoSort; ++row)
            require(compared(mode, entryAt(shown, row - 1), entryAt(shown, row)) <= 0);
    }
}
} // namespace

/** What a drive tells of its recordings: each text and object is an entry, and any of them can be sorted. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QJsonArray elements = QJsonDocument::fromJson(bytes).object()["ssd-ls"].toArray();
    QObject parent;
    SsdLsListModel list(&parent);
    SsdLsSortProxyModel shown(&list, &parent);
    const QList<SsdLsEntry *> entries = Camera::ssdLsEntries(elements, &parent);
    require(entries.size() == entryCount(elements));
    list.fill(entries);
    for (qsizetype i = 0; i < entries.size(); ++i) {
        require(entries[i]->entryId() == i);
        require(!entries[i]->date().isValid() || !entries[i]->dateStr().isEmpty());
        require(!entries[i]->oldFW() || (entries[i]->size() == 0 && entries[i]->time() == 0));
        entries[i]->select(i % 2 != 0);
    }
    sortByEachColumn(shown, int(entries.size()));
    return 0;
}
