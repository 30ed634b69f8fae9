#pragma once

#include <QPointer>
#include <QSortFilterProxyModel>
#include <QtQmlIntegration>

class SsdLsListModel;

/**
 * The listing of a camera's drive in the order that the operator chose. The order lies in the mode alone:
 * sort column and Qt's own sort order never change, because equal sizes and dates stand by ascending names in
 * either direction.
 */
class SsdLsSortProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectedCountChanged)
    Q_PROPERTY(int sortMode READ sortMode WRITE setSortMode NOTIFY sortModeChanged)
    Q_PROPERTY(QObject *shownBy MEMBER m_shownBy NOTIFY shownByChanged)

public:
    enum SortMode {
        NoSort = 0,
        NameSortAscending = 1,
        NameSortDescending = 2,
        SizeSortAscending = 3,
        SizeSortDescending = 4,
        DateSortAscending = 5,
        DateSortDescending = 6
    };
    Q_ENUM(SortMode)

    SsdLsSortProxyModel(SsdLsListModel *entries, QObject *parent);

    /** That of the listing, for views that know the proxy alone. */
    int selectedCount() const;
    /** A SortMode; any other number sorts nothing. */
    int sortMode() const { return m_sortMode; }
    void setSortMode(int sortMode);

signals:
    void selectedCountChanged();
    void sortModeChanged();
    void shownByChanged();

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    SsdLsListModel *m_entries;
    int m_sortMode = NameSortAscending;
    /** The window that the operator has open: one, however many ways there are to open it. */
    QPointer<QObject> m_shownBy;
};
