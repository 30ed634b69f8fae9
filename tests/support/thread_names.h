#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QStringList>

/** Numbers of the threads of this process with a name, of which the system keeps 15 characters. */
inline QStringList threadsNamed(const char *name)
{
    const QDir tasks(QStringLiteral("/proc/self/task"));
    QStringList numbers;
    for (const QString &number : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks.filePath(number + QStringLiteral("/comm")));
        if (file.open(QIODevice::ReadOnly) && file.readAll().chopped(1) == QByteArray(name).first(15))
            numbers.append(number);
    }
    return numbers;
}

inline bool hasThread(const char *name)
{
    return !threadsNamed(name).isEmpty();
}
