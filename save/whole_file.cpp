#include "save/whole_file.h"

#include <QByteArray>
#include <QFileDevice>

#include <sys/stat.h>

/** A file that somebody deletes takes all that is written to it, and is gone when it is closed. */
static bool isDeleted(const QFileDevice &file)
{
    struct stat status{};
    return fstat(file.handle(), &status) == 0 && status.st_nlink == 0;
}

bool writeWhole(QFileDevice &file, const QByteArray &data)
{
    return file.write(data) == data.size();
}

bool closeWhole(QFileDevice &file)
{
    const bool kept = file.flush() && !isDeleted(file);
    file.close();
    return kept && file.error() == QFileDevice::NoError;
}
