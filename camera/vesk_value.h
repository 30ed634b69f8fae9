#pragma once

#include <QJsonValue>
#include <QMetaType>
#include <QObject>
#include <QStringList>
#include <QVariant>
#include <QtQmlIntegration>

/**
 * One named, typed, observable setting of a source, bound to a place in a JSON tree.
 *
 * The stored variant always has the value's own type. Storage may belong to another object, which must then
 * outlive the value. Lives on the GUI thread.
 */
class VeskValue : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QVariant value READ variant NOTIFY valueChanged)
    Q_PROPERTY(int type READ type CONSTANT)

public:
    /** A 64-bit count that the camera sends as text of hexadecimal digits; it is written in decimal. */
    static constexpr int HexUInt64 = 0x10000;

    /**
     * type is Bool, Int, UInt, Double or QString of QMetaType, or HexUInt64; any other number keeps values as
     * they come. storage is where the value lives, null for storage of its own. altJsonPath is read when
     * jsonPath yields nothing.
     */
    VeskValue(const QStringList &jsonPath, int type, QObject *parent, QVariant *storage = nullptr,
              const QStringList &altJsonPath = {});
    ~VeskValue() override;

    const QStringList &jsonPath() const { return m_jsonPath; }
    const QStringList &altJsonPath() const { return m_altJsonPath; }
    int type() const { return m_type; }

    /** Copy of the stored variant. */
    QVariant variant() const { return *m_value; }
    /** The value as it is written to the camera, without quotes. */
    QString text() const;

    /** Local write: stores and, unless silent, tells valueChangedLocal. */
    virtual void setValue(const QVariant &value, bool silent);
    /** Takes a value from a JSON document; true when it changed. */
    virtual bool setValueFromJson(const QJsonValue &json);
    /** Stores a value converted to the type; true when it changed. */
    virtual bool updateValue(const QVariant &value);

signals:
    void valueChangedLocal(VeskValue *veskValue);
    void valueChanged();

private:
    QVariant fromJson(const QJsonValue &json) const;
    QVariant converted(const QVariant &value) const;

    QStringList m_jsonPath;
    QVariant *m_value;
    bool m_ownsValue;
    int m_type;
    QStringList m_altJsonPath;
};
