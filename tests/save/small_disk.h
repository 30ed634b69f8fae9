#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <sched.h>
#include <sys/mount.h>

/** A disk of its own for a test, seen by this process alone. */
class SmallDisk
{
public:
    explicit SmallDisk(int kiB)
        : m_mounted(mount("none", m_folder.path().toLocal8Bit().constData(), "tmpfs", 0,
                          QStringLiteral("size=%1k").arg(kiB).toLatin1().constData()) == 0)
    {
    }
    ~SmallDisk() { umount2(m_folder.path().toLocal8Bit().constData(), MNT_DETACH); }
    Q_DISABLE_COPY_MOVE(SmallDisk)

    bool isMounted() const { return m_mounted; }
    QString folder() const { return m_folder.path(); }
    bool makeReadOnly() const
    {
        return mount("none", m_folder.path().toLocal8Bit().constData(), nullptr, MS_REMOUNT | MS_RDONLY,
                     nullptr) == 0;
    }
    /** Fills the disk until as many pages of 4 KiB are left. */
    bool fill(int pagesLeft) const
    {
        QFile file(m_folder.filePath(QStringLiteral("filler")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return false;
        const QByteArray page(4096, 'x');
        while (file.write(page) == page.size()) {
        }
        return file.resize(file.size() - qint64(pagesLeft) * 4096);
    }

private:
    QTemporaryDir m_folder;
    bool m_mounted;
};

/** Before there is a second thread, which would see the disks of the machine. */
inline bool leaveTheMachinesDisks()
{
    if (unshare(CLONE_NEWNS) != 0)
        return false;
    // A root that is no mount of its own, as in a changed root, has nobody to tell of new disks.
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 || errno == EINVAL;
}
