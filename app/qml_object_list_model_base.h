#pragma once

#include <QAbstractListModel>
#include <QtQmlIntegration>

/** A list of live objects as the views see it; the rows are held by QQmlObjectListModel. */
class QQmlObjectListModelBase : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    using QAbstractListModel::QAbstractListModel;

public slots:
    virtual int size() const = 0;
    virtual int count() const = 0;
    virtual bool isEmpty() const = 0;
    virtual bool contains(QObject *item) const = 0;
    virtual int indexOf(QObject *item) const = 0;
    virtual int roleForName(const QByteArray &name) const = 0;
    virtual void clear() = 0;
    virtual void append(QObject *item) = 0;
    virtual void prepend(QObject *item) = 0;
    virtual void insert(int idx, QObject *item) = 0;
    virtual void move(int idx, int pos) = 0;
    virtual void remove(int idx) = 0;
    virtual void remove(QObject *item) = 0;
    virtual QObject *get(const QString &uid) const = 0;
    virtual QObject *get(int idx) const = 0;
    virtual QObject *getFirst() const = 0;
    virtual QObject *getLast() const = 0;
    virtual QVariantList toVarArray() const = 0;

protected slots:
    virtual void onItemPropertyChanged() = 0;

signals:
    void countChanged();
};
