#include "save/whole_file.h"

#include <QByteArray>
#include <QFileDevice>

bool writeWhole(QFileDevice &file, const QByteArray &data)
{
    return file.write(data) == data.size();
}

bool closeWhole(QFileDevice &file)
{
    const bool flushed = file.flush();
    file.close();
    return flushed && file.error() == QFileDevice::NoError;
}
