#pragma once

#include "app/qml_object_list_model.h"
#include "take/ssd_ls_entry.h"

/** What a camera's drive holds, in the order of the camera's answer, and which of it is selected. */
class SsdLsListModel : public QQmlObjectListModel<SsdLsEntry>
{
    Q_OBJECT
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectedCountChanged)

public:
    explicit SsdLsListModel(QObject *parent);

    /** Counted each time. */
    int selectedCount() const;
    /** The first selected entry in the order of the list, or null. */
    SsdLsEntry *firstSelected() const;

    /** In place of all that is listed, as one change. */
    void fill(const QList<SsdLsEntry *> &entries);
    void insert(int idx, QObject *entry) override;
    /** Tells selectedCountChanged of an empty list, too. */
    void clear() override;

signals:
    void selectedCountChanged();

private:
    void watch(SsdLsEntry *entry);
    void entrySelected(SsdLsEntry *entry, bool multi);
};
