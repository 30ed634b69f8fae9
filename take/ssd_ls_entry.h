#pragma once

#include <QDateTime>
#include <QObject>
#include <QtQmlIntegration>

/** One recording in the listing of a camera's drive. Lives on the GUI thread. */
class SsdLsEntry : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("")
    Q_PROPERTY(int entryId READ entryId CONSTANT)
    Q_PROPERTY(bool selected READ selected NOTIFY selectedChanged)
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(qlonglong size READ size CONSTANT)
    Q_PROPERTY(QDateTime date READ date CONSTANT)
    Q_PROPERTY(QString dateStr READ dateStr CONSTANT)
    Q_PROPERTY(bool oldFW READ oldFW CONSTANT)

public:
    /** size in bytes, time in seconds since 1970; both are 0 with oldFW, where the camera told a name alone.
     */
    SsdLsEntry(int entryId, const QString &name, qlonglong size, qlonglong time, bool oldFW, QObject *parent);

    /** Place in the camera's answer, from 0. */
    int entryId() const { return m_entryId; }
    bool selected() const { return m_selected; }
    const QString &name() const { return m_name; }
    qlonglong size() const { return m_size; }
    /** Seconds since 1970. */
    qlonglong time() const { return m_time; }
    /** The same in local time, which is worth the work only where it is shown. */
    QDateTime date() const { return QDateTime::fromSecsSinceEpoch(m_time); }
    QString dateStr() const;
    bool oldFW() const { return m_oldFW; }

    /** With multi, what is selected otherwise stays so. An entry that is selected already is left alone. */
    Q_INVOKABLE void select(bool multi);
    Q_INVOKABLE void unselect();

signals:
    void selectedChanged();
    void entrySelected(bool multi);
    void entryUnselected();

private:
    int m_entryId;
    bool m_selected = false;
    QString m_name;
    qlonglong m_size;
    qlonglong m_time;
    bool m_oldFW;
};
