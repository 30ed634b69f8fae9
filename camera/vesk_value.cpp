#include "camera/vesk_value.h"

namespace
{
int knownType(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Double:
    case QMetaType::QString:
    case VeskValue::HexUInt64:
        return type;
    default:
        return QMetaType::QVariant;
    }
}
} // namespace

VeskValue::VeskValue(const QStringList &jsonPath, int type, QObject *parent, QVariant *storage,
                     const QStringList &altJsonPath)
    : QObject(parent), m_jsonPath(jsonPath), m_value(storage ? storage : new QVariant), m_ownsValue(!storage),
      m_type(knownType(type)), m_altJsonPath(altJsonPath)
{
}

VeskValue::~VeskValue()
{
    if (m_ownsValue)
        delete m_value;
}

QString VeskValue::text() const
{
    switch (m_type) {
    case QMetaType::Bool:
        return m_value->toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::Int:
        return QString::number(m_value->toInt());
    case QMetaType::Double:
        return QString::number(m_value->toDouble(), 'f', 6);
    case HexUInt64:
        return QString::number(m_value->toULongLong(), 10);
    default:
        return m_value->toString();
    }
}

void VeskValue::setValue(const QVariant &value, bool silent)
{
    if (VeskValue::updateValue(value) && !silent)
        emit valueChangedLocal(this);
}

bool VeskValue::setValueFromJson(const QJsonValue &json)
{
    return VeskValue::updateValue(fromJson(json));
}

bool VeskValue::updateValue(const QVariant &value)
{
    if (value == *m_value)
        return false;
    *m_value = converted(value);
    emit valueChanged();
    return true;
}

QVariant VeskValue::fromJson(const QJsonValue &json) const
{
    switch (m_type) {
    case QMetaType::Bool:
        return json.toBool(false);
    case QMetaType::Int:
        return json.toInt(0);
    case QMetaType::UInt:
        return json.toInteger(0);
    case QMetaType::Double:
        return json.toDouble(0.0);
    case QMetaType::QString:
        return json.toString();
    default:
        return QVariant::fromValue(json);
    }
}

QVariant VeskValue::converted(const QVariant &value) const
{
    switch (m_type) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::UInt:
        return uint(value.toLongLong());
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString();
    case HexUInt64:
        return value.toString().toULongLong(nullptr, 16);
    default:
        return value;
    }
}
