#include "file/vesk_file_value.h"

bool VeskFileValue::setValueFromJson(const QJsonValue &json)
{
    return told(VeskValue::setValueFromJson(json));
}

bool VeskFileValue::updateValue(const QVariant &value)
{
    return told(VeskValue::updateValue(value));
}

bool VeskFileValue::told(bool changed)
{
    if (changed)
        emit valueChangedRemote();
    return changed;
}
