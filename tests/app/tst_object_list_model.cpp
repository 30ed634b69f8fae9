#include "app/qml_object_list_model.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>

class Item : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString id READ name CONSTANT)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(int size READ size WRITE setSize NOTIFY sizeChanged)
    Q_PROPERTY(int fixed READ fixed CONSTANT)

public:
    explicit Item(const QString &name, QObject *parent = nullptr) : QObject(parent), m_name(name) {}
    QString name() const { return m_name; }
    void setName(const QString &name)
    {
        m_name = name;
        emit nameChanged();
    }
    int size() const { return m_size; }
    void setSize(int size)
    {
        m_size = size;
        emit sizeChanged();
    }
    int fixed() const { return m_fixed; }
    void setFixed(int fixed) { m_fixed = fixed; }

signals:
    void nameChanged();
    void sizeChanged();

private:
    QString m_name;
    int m_size = 0;
    int m_fixed = 42;
};

/** The list model behind every list of live objects. */
class TestObjectListModel : public QObject
{
    Q_OBJECT

private:
    // objectName is property 0, id 1, name 2, size 3, fixed 4.
    static constexpr int NameRole = 259;
    static constexpr int SizeRole = 260;
    using Model = QQmlObjectListModel<Item>;

private slots:
    void propertyNamedIdGetsNoRoleAndAWarning()
    {
        QTest::ignoreMessage(QtWarningMsg, "Can't have id as a role name in QQmlObjectListModel<Item>");
        const Model model(nullptr);
        QCOMPARE(model.roleForName("id"), -1);
        QVERIFY(!model.roleNames().values().contains("id"));
    }

    void rolesAreTheItemAndItsProperties()
    {
        const Model model(nullptr);
        QCOMPARE(model.roleForName("qtObject"), 256);
        QCOMPARE(model.roleForName("objectName"), 257);
        QCOMPARE(model.roleForName("name"), NameRole);
        QCOMPARE(model.roleForName("size"), SizeRole);
        QCOMPARE(model.roleForName("fixed"), 261);
        QVERIFY(!model.roleNames().contains(258));
        QVERIFY(!model.roleNames().contains(Qt::DisplayRole));
        QCOMPARE(model.roleForName("nothing"), -1);
    }

    void dataGivesItemAndProperties()
    {
        Model model(nullptr, "name");
        auto *item = new Item("a");
        model.append(item);
        const QModelIndex index = model.index(0);
        QCOMPARE(model.data(index, 256).value<Item *>(), item);
        QCOMPARE(model.data(index, NameRole).toString(), "a");
        QCOMPARE(model.data(index, Qt::DisplayRole).toString(), "a");
        QCOMPARE(model.roleNames()[Qt::DisplayRole], "display");
        QVERIFY(!model.data(index, Qt::EditRole).isValid());
        QVERIFY(!model.data(QModelIndex(), NameRole).isValid());
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.rowCount(index), 0);
    }

    void setDataWritesPropertiesButNeverTheItem()
    {
        Model model(nullptr);
        auto *item = new Item("a");
        model.append(item);
        QVERIFY(model.setData(model.index(0), 7, SizeRole));
        QCOMPARE(item->size(), 7);
        QVERIFY(!model.setData(model.index(0), QVariant::fromValue(item), 256));
        QVERIFY(!model.setData(model.index(0), 1, 261));
    }

    void getOutsideTheListGivesNull()
    {
        Model model(nullptr);
        model.append(new Item("a"));
        QCOMPARE(model.get(-1), nullptr);
        QCOMPARE(model.get(model.count()), nullptr);
        QVERIFY(model.get(0));
        QCOMPARE(model.get(QStringLiteral("a")), nullptr);
    }

    void changeWithNotifySignalTellsThatRowAndRole()
    {
        Model model(nullptr);
        model.append(new Item("a"));
        auto *second = new Item("b");
        model.append(second);
        QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
        second->setSize(3);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy[0][0].toModelIndex().row(), 1);
        QCOMPARE(spy[0][1].toModelIndex().row(), 1);
        QCOMPARE(spy[0][2].value<QList<int>>(), QList<int>{SizeRole});
    }

    void changeOfAConstantPropertyIsNeverTold()
    {
        Model model(nullptr);
        auto *item = new Item("a");
        model.append(item);
        QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
        item->setFixed(43);
        item->setName("b"); // id follows it without a signal of its own
        QCOMPARE(model.data(model.index(0), 261).toInt(), 43);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy[0][2].value<QList<int>>(), QList<int>{NameRole});
    }

    void changeOfTheDisplayPropertyTellsDisplayRoleToo()
    {
        Model model(nullptr, "name");
        auto *item = new Item("a");
        model.append(item);
        QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
        item->setName("b");
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy[0][2].value<QList<int>>(), (QList<int>{NameRole, Qt::DisplayRole}));
    }

    void removedItemTellsNothingMore()
    {
        Model model(nullptr);
        Item item("a", this);
        model.append(&item);
        model.remove(&item);
        QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
        item.setSize(1);
        QCOMPARE(spy.count(), 0);
    }

    void appendOfNullOrAnotherClassLeavesTheListAlone()
    {
        Model model(nullptr);
        QSignalSpy spy(&model, &QQmlObjectListModelBase::countChanged);
        model.append(nullptr);
        QObject other;
        model.append(&other);
        QCOMPARE(model.count(), 0);
        QVERIFY(model.isEmpty());
        QCOMPARE(spy.count(), 0);
    }

    void itemWithoutParentIsDeletedLaterOnRemoval()
    {
        Model model(nullptr);
        QPointer<Item> own = new Item("a");
        model.append(own);
        QCOMPARE(own->parent(), &model);
        model.remove(own.data());
        QVERIFY(own);
        QTRY_VERIFY(!own);
    }

    void itemWithAnotherParentSurvivesRemoval()
    {
        QObject owner;
        QPointer<Item> item = new Item("a", &owner);
        Model model(nullptr);
        model.append(item);
        model.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(item);
        QCOMPARE(item->parent(), &owner);
    }

    void countIsRightBeforeRowsAreTold()
    {
        Model model(nullptr);
        QStringList order;
        connect(&model, &QQmlObjectListModelBase::countChanged, this,
                [&] { order << QStringLiteral("count %1").arg(model.count()); });
        connect(&model, &QAbstractItemModel::rowsInserted, this, [&] { order << "inserted"; });
        connect(&model, &QAbstractItemModel::rowsRemoved, this, [&] { order << "removed"; });
        model.append(new Item("a"));
        model.prepend(new Item("b"));
        model.remove(0);
        model.clear();
        QCOMPARE(order, (QStringList{"count 1", "inserted", "count 2", "inserted", "count 1", "removed",
                                     "count 0", "removed"}));
    }

    void clearIsOneRemovalOfAllRows()
    {
        Model model(nullptr);
        model.append(new Item("a"));
        model.append(new Item("b"));
        QSignalSpy spy(&model, &QAbstractItemModel::rowsRemoved);
        model.clear();
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy[0][1].toInt(), 0);
        QCOMPARE(spy[0][2].toInt(), 1);
        model.clear();
        QCOMPARE(spy.count(), 1);
    }

    void orderFollowsInsertPrependAndMove()
    {
        Model model(nullptr);
        auto *a = new Item("a");
        auto *b = new Item("b");
        auto *c = new Item("c");
        model.append(a);
        model.prepend(b);
        model.insert(1, c);
        QCOMPARE(model.items(), (QList<Item *>{b, c, a}));
        model.move(0, 2);
        QCOMPARE(model.items(), (QList<Item *>{c, a, b}));
        QSignalSpy spy(&model, &QAbstractItemModel::rowsInserted);
        model.move(1, 1);
        QCOMPARE(spy.count(), 0);
        QCOMPARE(model.indexOf(b), 2);
        QCOMPARE(model.getFirst(), c);
        QCOMPARE(model.getLast(), b);
        QCOMPARE(model.toVarArray().size(), 3);
        QCOMPARE(model.toVarArray()[1].value<Item *>(), a);
    }

    void removeOfAStrangerOrABadIndexDoesNothing()
    {
        Model model(nullptr);
        model.append(new Item("a"));
        Item stranger("s", this);
        model.remove(&stranger);
        model.remove(-1);
        model.remove(1);
        QCOMPARE(model.count(), 1);
        QVERIFY(!model.contains(&stranger));
    }

    void uidFindsTheItemAndFollowsItsChange()
    {
        Model model(nullptr, {}, "name");
        auto *item = new Item("a");
        model.append(item);
        QCOMPARE(model.get(QStringLiteral("a")), item);
        item->setName("b");
        QCOMPARE(model.get(QStringLiteral("a")), nullptr);
        QCOMPARE(model.get(QStringLiteral("b")), item);
        item->setName(QString());
        QCOMPARE(model.get(QString()), nullptr);
        item->setName("c");
        model.remove(0);
        QCOMPARE(model.get(QStringLiteral("c")), nullptr);
    }
};

QTEST_GUILESS_MAIN(TestObjectListModel)
#include "tst_object_list_model.moc"
