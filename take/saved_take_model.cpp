#include "take/saved_take_model.h"

#include "app/qml_object_list_model.h"
#include "take/take.h"

#include <QDebug>

SavedTakeModel::SavedTakeModel(QAbstractItemModel *takes, QObject *parent) : QSortFilterProxyModel(parent)
{
    setSourceModel(takes);
    connect(this, &QAbstractItemModel::rowsInserted, this, &SavedTakeModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &SavedTakeModel::countChanged);
    connect(this, &QAbstractItemModel::layoutChanged, this, &SavedTakeModel::countChanged);
    qDebug() << "dynamic: " << dynamicSortFilter();
}

bool SavedTakeModel::filterAcceptsRow(int row, const QModelIndex &parent) const
{
    const QModelIndex index = sourceModel()->index(row, 0, parent);
    const auto *take = index.data(QQmlObjectListModel<Take>::ItemRole).value<Take *>();
    return take && take->savedOpened();
}
