#pragma once

#include "camera/vesk_value.h"

/**
 * An adjustment of a native file. It can be changed like that of a take, but lives in memory for as long as
 * the file is open: the file on the disk stays as it was saved, and a change goes into the next save.
 */
class VeskFileValue : public VeskValue
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QVariant value READ variant WRITE setLocal NOTIFY valueChanged)

public:
    using VeskValue::VeskValue;

    bool setValueFromJson(const QJsonValue &json) override;
    bool updateValue(const QVariant &value) override;

signals:
    /** The value was read from the file and is another one than before. */
    void valueChangedRemote();

private:
    void setLocal(const QVariant &value) { setValue(value, false); }
    bool told(bool changed);
};
