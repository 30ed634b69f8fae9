#pragma once

#include <QSortFilterProxyModel>
#include <QtQmlIntegration>

/** The takes of a camera that hold a recording, over the list of all of them. */
class SavedTakeModel : public QSortFilterProxyModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    /** takes holds Take objects. */
    SavedTakeModel(QAbstractItemModel *takes, QObject *parent);

    int count() const { return rowCount(); }

signals:
    void countChanged();

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;
};
