#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>

/** Names of the threads of this process, as debuggers see them: the system keeps 15 characters of each. */
inline QByteArrayList threadNames()
{
    const QDir tasks(QStringLiteral("/proc/self/task"));
    QByteArrayList names;
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + QStringLiteral("/comm")));
        if (name.open(QIODevice::ReadOnly))
            names.append(name.readAll().chopped(1));
    }
    return names;
}

inline bool hasThread(const char *name)
{
    return threadNames().contains(QByteArray(name).first(15));
}
