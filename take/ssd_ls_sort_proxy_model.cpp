#include "take/ssd_ls_sort_proxy_model.h"

#include "take/ssd_ls_list_model.h"

#include <algorithm>

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

/**
 * Compares without regard to case. Names on a drive begin alike for long, and what is the same to the bit
 * need not be folded; a pair of surrogates is not torn, as it folds as a whole.
 */
static int compareNames(const SsdLsEntry &left, const SsdLsEntry &right)
{
    const QStringView a = left.name();
    const QStringView b = right.name();
    qsizetype same = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
    if (same > 0 && a[same - 1].isHighSurrogate())
        --same;
    return a.sliced(same).compare(b.sliced(same), Qt::CaseInsensitive);
}

bool SsdLsSortProxyModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    // What the item role gives, without a variant for each of the many comparisons.
    const SsdLsEntry &a = *m_entries->items().at(left.row());
    const SsdLsEntry &b = *m_entries->items().at(right.row());
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
        return a.time() != b.time() ? a.time() < b.time() : compareNames(a, b) < 0;
    case DateSortDescending:
        return a.time() != b.time() ? a.time() > b.time() : compareNames(a, b) < 0;
    default:
        return true;
    }
}
