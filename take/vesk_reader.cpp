#include "take/vesk_reader.h"

VeskReader::VeskReader(QObject *parent) : QObject(parent) {}

void VeskReader::setError(const QString &error)
{
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}
