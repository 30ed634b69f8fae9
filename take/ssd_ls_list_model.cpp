#include "take/ssd_ls_list_model.h"

#include <algorithm>

SsdLsListModel::SsdLsListModel(QObject *parent) : QQmlObjectListModel<SsdLsEntry>(parent) {}

int SsdLsListModel::selectedCount() const
{
    return int(std::count_if(items().begin(), items().end(), std::mem_fn(&SsdLsEntry::selected)));
}

SsdLsEntry *SsdLsListModel::firstSelected() const
{
    const auto found = std::find_if(items().begin(), items().end(), std::mem_fn(&SsdLsEntry::selected));
    return found == items().end() ? nullptr : *found;
}

void SsdLsListModel::fill(const QList<SsdLsEntry *> &entries)
{
    clear();
    appendAll(entries);
    for (SsdLsEntry *entry : entries)
        watch(entry);
}

void SsdLsListModel::insert(int idx, QObject *object)
{
    auto *entry = qobject_cast<SsdLsEntry *>(object);
    if (!entry)
        return;
    QQmlObjectListModel<SsdLsEntry>::insert(idx, entry);
    watch(entry);
}

void SsdLsListModel::watch(SsdLsEntry *entry)
{
    connect(entry, &SsdLsEntry::entrySelected, this,
            [this, entry](bool multi) { entrySelected(entry, multi); });
    connect(entry, &SsdLsEntry::entryUnselected, this, &SsdLsListModel::selectedCountChanged);
}

void SsdLsListModel::clear()
{
    QQmlObjectListModel<SsdLsEntry>::clear();
    emit selectedCountChanged();
}

void SsdLsListModel::entrySelected(SsdLsEntry *entry, bool multi)
{
    if (!multi) {
        for (SsdLsEntry *other : items()) {
            if (other->entryId() != entry->entryId())
                other->unselect();
        }
    }
    emit selectedCountChanged();
}
