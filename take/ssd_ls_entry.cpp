#include "take/ssd_ls_entry.h"

SsdLsEntry::SsdLsEntry(int entryId, const QString &name, qlonglong size, qlonglong time, bool oldFW,
                       QObject *parent)
    : QObject(parent), m_entryId(entryId), m_name(name), m_size(size), m_time(time), m_oldFW(oldFW)
{
}

QString SsdLsEntry::dateStr() const
{
    return date().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

void SsdLsEntry::select(bool multi)
{
    if (m_selected)
        return;
    m_selected = true;
    emit selectedChanged();
    emit entrySelected(multi);
}

void SsdLsEntry::unselect()
{
    if (!m_selected)
        return;
    m_selected = false;
    emit selectedChanged();
    emit entryUnselected();
}
