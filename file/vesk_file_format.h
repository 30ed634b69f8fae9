#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QtTypes>

#include <optional>

class QIODevice;

/**
 * The native capture file: a header, a block of JSON that tells how the frames were taken and how they are to
 * be shown, and the frame records as the camera sent them, back to back. All integers are little-endian.
 *
 *     0  4  "VESK"
 *     4  4  version
 *     8  8  jsonOffset
 *    16  8  jsonSize
 *    24  8  dataOffset
 *    32  4  dataFormat, from version 2 on
 *
 * A reader goes by the offsets and assumes nothing about where the blocks lie. Plain functions, for any
 * thread.
 */
namespace VeskFileFormat
{
/** The version that is written; files of this and every earlier one are read. */
inline constexpr quint32 Version = 2;
/** Bytes of the header of a version 2 file, and of the ones before. */
inline constexpr int HeaderSize = 36;
inline constexpr int OldHeaderSize = 32;
/** Multiple of which the first record of a new file lies at. */
inline constexpr quint64 DataAlignment = 4096;
/** Bytes. A block takes thirty times its size while it is parsed; one that a camera fills has a few KB. */
inline constexpr quint64 MaxJsonSize = 1024 * 1024;
/** Bytes; twice the largest record of any camera. What claims more is not read. */
inline constexpr quint32 MaxFrameSize = 32 * 1024 * 1024;

/** Offsets and sizes in bytes from the start of the file. */
struct Header {
    quint32 version = Version;
    quint64 jsonOffset = HeaderSize;
    quint64 jsonSize = 0;
    quint64 dataOffset = 0;
    /** Nothing depends on it; 0 in a file that has no such field. */
    quint32 dataFormat = 3;
};

/** The start of a new file: header and JSON block. The first record goes to dataOffset, behind a gap. */
struct Preamble {
    QByteArray bytes;
    qint64 dataOffset = 0;
};

/**
 * values are those of the source; first_fr, last_fr and fr_cnt become those of the range that is saved, in
 * the source's own numbering.
 */
Preamble preamble(QJsonObject values, qint64 startFr, qint64 frCnt);

/**
 * Reads the header. None when the device holds no native file or one of a later version. A field behind the
 * end of the device is 0, which makes a block that no file has.
 */
std::optional<Header> readHeader(QIODevice &device);

/**
 * Reads the JSON block. None, with the reason in error, when a size or offset of the header does not fit the
 * device or the block is no JSON object. Nothing is read or allocated before the sizes have been checked.
 */
std::optional<QJsonObject> readJson(QIODevice &device, const Header &header, QString &error);

/**
 * Where a frame lies in bytes from the start of the file. None before the first frame, and when that is no
 * position in any file. fr and firstFr are numbers of the recording and may be negative.
 */
std::optional<qint64> framePosition(qint64 dataOffset, quint32 frameSize, qint64 fr, qint64 firstFr);

/**
 * Reads records that lie one behind the other: fewer bytes where the device ends before, and none from no
 * position or of records larger than MaxFrameSize. Allocates no more than the device holds.
 */
QByteArray readRecords(QIODevice &device, std::optional<qint64> position, quint32 frameSize, qint64 frames);
} // namespace VeskFileFormat
