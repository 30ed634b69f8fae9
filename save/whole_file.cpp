#include "save/whole_file.h"

#include <QByteArray>
#include <QFileDevice>

#include <algorithm>
#include <sys/stat.h>

/** A file that somebody deletes takes all that is written to it, and is gone when it is closed. */
static bool isDeleted(const QFileDevice &file)
{
    struct stat status{};
    return fstat(file.handle(), &status) == 0 && status.st_nlink == 0;
}

/**
 * Bytes in one write. The system looks for memory as large as a write in one piece, which may take it several
 * times as long as to copy the bytes; for small pieces it has some at hand.
 */
static constexpr qsizetype PieceBytes = 32 * 1024;

bool writeWhole(QFileDevice &file, const QByteArray &data)
{
    for (qsizetype at = 0; at < data.size(); at += PieceBytes) {
        const qsizetype bytes = std::min(PieceBytes, data.size() - at);
        if (file.write(data.constData() + at, bytes) != bytes)
            return false;
    }
    return true;
}

bool closeWhole(QFileDevice &file)
{
    const bool kept = file.flush() && !isDeleted(file);
    file.close();
    return kept && file.error() == QFileDevice::NoError;
}
