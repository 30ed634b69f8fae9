#pragma once

#include "sim/request.h"

#include <QCryptographicHash>

namespace q4sim
{

/// A firmware file as it came in.
struct Upload {
    QString error;    ///< what is wrong with the form, in one sentence; empty if nothing
    QString fileName; ///< as the form names it
    QList<QPair<QByteArray, QByteArray>> headers; ///< of the form's part, names in lower case
    qint64 size = 0;                              ///< bytes of the file
    QByteArray sha256;                            ///< of the file, 32 bytes
    QByteArray start;                             ///< first bytes of the file, at most startSize

    static constexpr qsizetype startSize = 64;
};

/// Reads the form of a firmware upload piece by piece, and keeps no more of it than one piece: a file may be
/// larger than the camera's memory. The form has one part, of the name "q4fw" and with a file name.
class FormReader
{
public:
    explicit FormReader(const QByteArray &contentType);

    void feed(const QByteArray &piece);

    /// To be asked for once, when the last piece is in.
    Upload result();

private:
    enum class At { FirstBoundary, PartHead, File, FileEnd, End, Broken };

    bool step(); ///< false when more bytes are needed
    bool readBoundary();
    bool readPartHead();
    bool readFile();
    bool readFileEnd();
    void keep(qsizetype size);
    bool fail(const QString &error);

    At m_at = At::FirstBoundary;
    QByteArray m_boundary; ///< with the two dashes in front of it
    QByteArray m_pending;
    Upload m_upload;
    QCryptographicHash m_hash;
};

} // namespace q4sim
