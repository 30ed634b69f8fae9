#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace q4sim
{

/// What is in the drive's slot.
enum class Medium { None, Formatted, Blank, Broken };

/// The drive: its recordings and what is being written. Times are ns.
class Drive
{
public:
    /// Numbers of ssd/state.
    enum State {
        Removed = 0,
        Insert = 1,
        Enable = 2,
        Ready = 3,
        Shutdown = 4,
        PowerDown = 5,
        Off = 6,
        Fail = 7,
        Unformatted = 8,
        Formatting = 9
    };
    static constexpr qint64 insertNs = 300000000;
    static constexpr qint64 enableNs = 700000000;
    static constexpr qint64 shutdownNs = 300000000;
    static constexpr qint64 powerDownNs = 200000000;
    static constexpr qint64 formatNs = 2000000000;
    static constexpr qint64 bytesPerSecond = 500000000;

    /// A recording on its way to the drive.
    struct Save {
        QString name;
        qint64 bytes = 0;
        int take = 0;
        bool deletesTake = false; ///< when it is complete
    };

    explicit Drive(Medium medium); ///< a medium is mounted already

    /// Another medium; none pulls out what is there. Returns what was not written to its end.
    QList<Save> insert(Medium medium, qint64 nowNs);

    int state(qint64 nowNs) const;
    QJsonArray listing(bool plainNames, qint64 nowNs) const; ///< objects, or names alone
    bool umount(qint64 nowNs);                               ///< false while it writes and without a medium
    bool format(const QString &name, qint64 nowNs);

    /// Queues a recording to be written. False when the drive is not ready.
    bool save(const Save &save, qint64 nowNs);

    /// Ends what has been written until now, and tells what it was.
    QList<Save> advance(qint64 nowNs);

    /// The status document's "ssd" but for the values that are written.
    QJsonObject object(qint64 nowNs) const;

private:
    struct Entry {
        QString name;
        qint64 size;
        qint64 time;
    };
    bool accepts(qint64 nowNs) const; ///< eject and format
    int progress(qint64 nowNs) const; ///< percent

    QList<Entry> m_entries;
    QString m_name;
    Medium m_medium;
    State m_state; ///< Insert, Shutdown and Formatting from then on; state() tells how far it is
    qint64 m_changeNs = 0;
    QList<Save> m_saves; ///< the first is being written
    qint64 m_saveNs = 0; ///< start of the first
    int m_savesDone = 0;
};

} // namespace q4sim
