#pragma once

#include "app/qml_object_list_model_base.h"

#include <QHash>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QSet>

#include <algorithm>

/**
 * List model over objects of one class. The roles are the properties of ItemType, found by reflection:
 * role 256 ("qtObject") is the item itself, role 257 + i its property number i, inherited ones included.
 * A property with a notify signal tells the views of its change by itself. Lives on the GUI thread.
 */
template <class ItemType> class QQmlObjectListModel : public QQmlObjectListModelBase
{
public:
    /** The role of the items themselves. */
    static constexpr int ItemRole = Qt::UserRole;

    /** displayRole and uidRole name the properties behind Qt::DisplayRole and get(uid); both may be empty. */
    explicit QQmlObjectListModel(QObject *parent, const QByteArray &displayRole = {},
                                 const QByteArray &uidRole = {})
        : QQmlObjectListModelBase(parent), m_uidRoleName(uidRole), m_dispRoleName(displayRole),
          m_metaObj(ItemType::staticMetaObject)
    {
        m_handler = metaObject()->method(metaObject()->indexOfMethod("onItemPropertyChanged()"));
        if (!m_dispRoleName.isEmpty())
            m_roles.insert(Qt::DisplayRole, "display");
        m_roles.insert(ItemRole, "qtObject");
        for (int i = 0; i < m_metaObj.propertyCount(); ++i)
            addRole(i);
    }

    int size() const override { return int(m_items.size()); }
    int count() const override { return m_count; }
    bool isEmpty() const override { return m_items.isEmpty(); }
    bool contains(QObject *item) const override { return indexOf(item) >= 0; }
    int indexOf(QObject *item) const override { return int(m_items.indexOf(qobject_cast<ItemType *>(item))); }
    int roleForName(const QByteArray &name) const override { return m_roles.key(name, -1); }

    void clear() override
    {
        if (m_items.isEmpty())
            return;
        beginRemoveRows({}, 0, size() - 1);
        const QList<ItemType *> removed = std::exchange(m_items, {});
        for (ItemType *item : removed)
            dereferenceItem(item);
        updateCount();
        endRemoveRows();
    }

    void append(QObject *item) override { insert(size(), item); }
    void prepend(QObject *item) override { insert(0, item); }

    void insert(int idx, QObject *object) override
    {
        auto *item = qobject_cast<ItemType *>(object);
        if (!item)
            return;
        beginInsertRows({}, idx, idx);
        m_items.insert(idx, item);
        referenceItem(item);
        updateCount();
        endInsertRows();
    }

    /** Adds many items at the end as one change, so that a sorted view of them is sorted once. */
    void appendAll(const QList<ItemType *> &added)
    {
        if (added.isEmpty())
            return;
        beginInsertRows({}, size(), size() + int(added.size()) - 1);
        m_items.append(added);
        for (ItemType *item : added)
            referenceItem(item);
        updateCount();
        endInsertRows();
    }

    void move(int idx, int pos) override
    {
        if (idx == pos)
            return;
        beginRemoveRows({}, idx, idx);
        beginInsertRows({}, pos, pos);
        m_items.move(idx, pos);
        endInsertRows();
        endRemoveRows();
    }

    void remove(int idx) override
    {
        if (idx < 0 || idx >= size())
            return;
        beginRemoveRows({}, idx, idx);
        dereferenceItem(m_items.takeAt(idx));
        updateCount();
        endRemoveRows();
    }

    void remove(QObject *item) override { remove(indexOf(item)); }

    QObject *get(const QString &uid) const override { return m_indexByUid.value(uid); }
    QObject *get(int idx) const override { return m_items.value(idx); }
    QObject *getFirst() const override { return m_items.first(); }
    QObject *getLast() const override { return m_items.last(); }

    QVariantList toVarArray() const override
    {
        QVariantList list;
        for (ItemType *item : m_items)
            list.append(QVariant::fromValue(item));
        return list;
    }

    /** The rows in order, for callers that know the class. */
    const QList<ItemType *> &items() const { return m_items; }

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : size(); }

    QVariant data(const QModelIndex &index, int role) const override
    {
        ItemType *item = m_items.value(index.row());
        // Sorted and filtered views ask for this one often; it needs no name.
        if (item && role == ItemRole)
            return QVariant::fromValue(item);
        const QByteArray name = nameOfRole(role);
        if (!item || name.isEmpty())
            return {};
        return item->property(name.constData());
    }

    bool setData(const QModelIndex &index, const QVariant &value, int role) override
    {
        ItemType *item = m_items.value(index.row());
        const QByteArray name = nameOfRole(role);
        if (!item || name.isEmpty() || role == ItemRole)
            return false;
        return item->setProperty(name.constData(), value);
    }

    QHash<int, QByteArray> roleNames() const override { return m_roles; }

protected:
    void onItemPropertyChanged() override
    {
        auto *item = qobject_cast<ItemType *>(sender());
        const int row = indexOf(item);
        const int role = m_signalIdxToRole.value(senderSignalIndex(), -1);
        if (row < 0 || role < 0)
            return;
        const QByteArray name = m_roles.value(role);
        QList<int> roles{role};
        if (name == m_dispRoleName)
            roles.append(Qt::DisplayRole);
        const QModelIndex idx = index(row);
        emit dataChanged(idx, idx, roles);
        if (!m_uidRoleName.isEmpty() && name == m_uidRoleName)
            enterUid(item);
    }

private:
    static const QSet<QByteArray> &forbiddenNames()
    {
        static const QSet<QByteArray> names{"id", "index", "class", "model", "modelData"};
        return names;
    }

    void addRole(int propertyIndex)
    {
        const QMetaProperty property = m_metaObj.property(propertyIndex);
        const QByteArray name = property.name();
        if (forbiddenNames().contains(name)) {
            qWarning() << "Can't have" << name.constData() << "as a role name in"
                       << qPrintable(QStringLiteral("QQmlObjectListModel<%1>")
                                         .arg(QLatin1StringView(m_metaObj.className())));
            return;
        }
        const int role = ItemRole + 1 + propertyIndex;
        m_roles.insert(role, name);
        if (property.hasNotifySignal())
            m_signalIdxToRole.insert(property.notifySignalIndex(), role);
    }

    QByteArray nameOfRole(int role) const
    {
        return role == Qt::DisplayRole ? m_dispRoleName : m_roles.value(role);
    }

    void referenceItem(ItemType *item)
    {
        if (!item->parent())
            item->setParent(this);
        for (auto it = m_signalIdxToRole.cbegin(); it != m_signalIdxToRole.cend(); ++it)
            QObject::connect(item, item->metaObject()->method(it.key()), this, m_handler,
                             Qt::UniqueConnection);
        enterUid(item);
    }

    void dereferenceItem(ItemType *item)
    {
        QObject::disconnect(this, nullptr, item, nullptr);
        QObject::disconnect(item, nullptr, this, nullptr);
        leaveUid(item);
        if (item->parent() == this)
            item->deleteLater();
    }

    void enterUid(ItemType *item)
    {
        if (m_uidRoleName.isEmpty())
            return;
        leaveUid(item);
        const QString uid = item->property(m_uidRoleName.constData()).toString();
        if (!uid.isEmpty())
            m_indexByUid.insert(uid, item);
    }

    void leaveUid(ItemType *item)
    {
        const auto entry = std::find(m_indexByUid.cbegin(), m_indexByUid.cend(), item);
        if (entry != m_indexByUid.cend())
            m_indexByUid.erase(entry);
    }

    void updateCount()
    {
        if (std::exchange(m_count, size()) != m_count)
            emit countChanged();
    }

    int m_count = 0;
    QByteArray m_uidRoleName;
    QByteArray m_dispRoleName;
    QMetaObject m_metaObj;
    QMetaMethod m_handler;
    QHash<int, QByteArray> m_roles;
    QHash<int, int> m_signalIdxToRole;
    QList<ItemType *> m_items;
    QHash<QString, ItemType *> m_indexByUid;
};
