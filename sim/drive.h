#pragma once

#include "sim/footage.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <map>
#include <memory>

namespace q4sim
{

/// What is in the drive's slot.
enum class Medium { None, Formatted, Blank, Broken };

/// The drive: its recordings, those of them that are open, and what is being written. Times are ns.
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

    /// A recording as it lies on the drive, its frames numbered as in the take.
    struct Recording {
        QString name;
        qint64 size = 0; ///< bytes
        qint64 time = 0; ///< seconds since 1970
        qint64 firstFrame = 0;
        qint64 lastFrame = -1;
        std::shared_ptr<Footage> footage;
    };

    /// A recording on its way to the drive.
    struct Save {
        Recording recording;
        int take = 0;
        bool deletesTake = false; ///< when it is complete
    };

    Drive(qint64 bytes, qint64 bytesPerSecond); ///< without a medium

    /// What lies on a formatted medium when it is inserted.
    void setRecordings(const QList<Recording> &recordings) { m_initial = recordings; }
    /// A medium that was inserted long ago.
    void mount(Medium medium);

    // Each returns what was not written to its end.
    QList<Save> insert(Medium medium, qint64 nowNs); ///< another medium; none pulls out what is there
    QList<Save> fail();                              ///< works no more, until another one is inserted

    void fill() { m_bytes = taken(); } ///< as many bytes as it has are taken

    int state(qint64 nowNs) const;
    QJsonArray listing(bool plainNames, qint64 nowNs) const; ///< objects, or names alone
    bool umount(qint64 nowNs);                               ///< false while it writes and without a medium
    bool format(const QString &name, qint64 nowNs);

    /// Number of a recording from now on, never used before; 0 when there is none of this name.
    int open(const QString &name);
    bool close(int number);
    /// Null for a number that is not open.
    const Recording *openTake(int number) const;

    /// The name as a file that is not there yet: with the extension, and with a number when that is taken.
    QString freeName(const QString &name) const;
    /// Queues a recording to be written. False when the drive is not ready, or too small.
    bool save(const Save &save, qint64 nowNs);
    /// Number of the newest save; its completion brings wr_seq to this number.
    int lastSeq() const { return m_savesDone + static_cast<int>(m_saves.size()); }
    bool writes() const { return !m_saves.isEmpty(); }
    bool writes(int take) const;

    /// Ends what has been written until now, and tells what it was.
    QList<Save> advance(qint64 nowNs);

    /// The status document's "ssd" but for the values that are written.
    QJsonObject object(qint64 nowNs) const;

private:
    bool accepts(qint64 nowNs) const; ///< eject and format
    int progress(qint64 nowNs) const; ///< percent
    qint64 durationNs(const Save &save) const;
    qint64 taken() const; ///< bytes, with those that are about to be written
    QList<Save> stop();

    QList<Recording> m_initial;
    QList<Recording> m_recordings;
    std::map<int, Recording> m_open;
    int m_opened = 0; ///< so far
    QString m_name;
    qint64 m_wholeBytes; ///< of a medium that was not filled
    qint64 m_bytes;
    qint64 m_bytesPerSecond;
    Medium m_medium = Medium::None;
    State m_state = Removed; ///< Insert, Shutdown and Formatting from then on; state() tells how far it is
    qint64 m_changeNs = 0;
    QList<Save> m_saves; ///< the first is being written
    qint64 m_saveNs = 0; ///< start of the first
    int m_savesDone = 0;
};

} // namespace q4sim
