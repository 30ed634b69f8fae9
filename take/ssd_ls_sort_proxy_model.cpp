#include "take/ssd_ls_sort_proxy_model.h"

#include "take/ssd_ls_list_model.h"

SsdLsSortProxyModel::SsdLsSortProxyModel(SsdLsListModel *entries, QObject *parent)
    : QSortFilterProxyModel(parent), m_entries(entries)
{
    connect(entries, &SsdLsListModel::selectedCountChanged, this, &SsdLsSortProxyModel::selectedCountChanged);
    setSourceModel(entries);
    sort(0, Qt::AscendingOrder);
}

int SsdLsSortProxyModel::selectedCount() const
{
    return m_entries->selectedCount();
}

void SsdLsSortProxyModel::setSortMode(int sortMode)
{
    if (sortMode == m_sortMode)
        return;
    m_sortMode = sortMode;
    emit sortModeChanged();
    invalidate();
}

static int compareNames(const SsdLsEntry &left, const SsdLsEntry &right)
{
    return QString::compare(left.name(), right.name(), Qt::CaseInsensitive);
}

bool SsdLsSortProxyModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const auto entry = [](const QModelIndex &index) {
        return index.data(SsdLsListModel::ItemRole).value<SsdLsEntry *>();
    };
    const SsdLsEntry &a = *entry(left);
    const SsdLsEntry &b = *entry(right);
    switch (m_sortMode) {
    case NameSortAscending:
        return compareNames(a, b) < 0;
    case NameSortDescending:
        return compareNames(a, b) > 0;
    case SizeSortAscending:
        return a.size() != b.size() ? a.size() < b.size() : compareNames(a, b) < 0;
    case SizeSortDescending:
        return a.size() != b.size() ? a.size() > b.size() : compareNames(a, b) < 0;
    case DateSortAscending:
        return a.date() != b.date() ? a.date() < b.date() : compareNames(a, b) < 0;
    case DateSortDescending:
        return a.date() != b.date() ? a.date() > b.date() : compareNames(a, b) < 0;
    default:
        return true;
    }
}
