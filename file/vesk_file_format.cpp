#include "file/vesk_file_format.h"

#include <QIODevice>
#include <QJsonDocument>
#include <QtEndian>
#include <QtNumeric>

#include <algorithm>
#include <array>

namespace
{
constexpr char Magic[] = {'V', 'E', 'S', 'K'};
constexpr int VersionAt = 4;
constexpr int JsonOffsetAt = 8;
constexpr int JsonSizeAt = 16;
constexpr int DataOffsetAt = 24;
constexpr int DataFormatAt = 32;

/** The first multiple of the alignment that is not below a position. */
quint64 aligned(quint64 position)
{
    return (position + VeskFileFormat::DataAlignment - 1) & ~(VeskFileFormat::DataAlignment - 1);
}

QByteArray headerBytes(const VeskFileFormat::Header &header)
{
    QByteArray bytes(VeskFileFormat::HeaderSize, '\0');
    char *const start = bytes.data();
    std::copy(std::begin(Magic), std::end(Magic), start);
    qToLittleEndian(header.version, start + VersionAt);
    qToLittleEndian(header.jsonOffset, start + JsonOffsetAt);
    qToLittleEndian(header.jsonSize, start + JsonSizeAt);
    qToLittleEndian(header.dataOffset, start + DataOffsetAt);
    qToLittleEndian(header.dataFormat, start + DataFormatAt);
    return bytes;
}

/** Empty when the blocks lie where a file of this size can have them, else what is wrong. */
QString misfit(const VeskFileFormat::Header &header, quint64 fileSize)
{
    const quint64 headerSize =
        header.version >= 2 ? VeskFileFormat::HeaderSize : VeskFileFormat::OldHeaderSize;
    if (fileSize < headerSize)
        return QStringLiteral("the file ends in its header");
    if (header.jsonOffset > fileSize || header.jsonSize > fileSize - header.jsonOffset)
        return QStringLiteral("the file ends before its description");
    if (header.jsonSize > VeskFileFormat::MaxJsonSize)
        return QStringLiteral("the description is too large");
    // A save that failed with its first record leaves a file that ends before the gap.
    if (header.dataOffset > aligned(fileSize))
        return QStringLiteral("the file ends before its frames");
    return {};
}
} // namespace

VeskFileFormat::Preamble VeskFileFormat::preamble(QJsonObject values, qint64 startFr, qint64 frCnt)
{
    values.insert(QStringLiteral("fr_cnt"), frCnt);
    values.insert(QStringLiteral("first_fr"), startFr);
    values.insert(QStringLiteral("last_fr"), startFr + frCnt - 1);
    const QByteArray json = QJsonDocument(values).toJson(QJsonDocument::Compact);
    Header header;
    header.jsonSize = quint64(json.size());
    header.dataOffset = aligned(header.jsonOffset + header.jsonSize);
    return {headerBytes(header) + json, qint64(header.dataOffset)};
}

std::optional<VeskFileFormat::Header> VeskFileFormat::readHeader(QIODevice &device)
{
    std::array<char, HeaderSize> bytes{};
    if (!device.seek(0) || device.read(bytes.data(), HeaderSize) < JsonOffsetAt)
        return {};
    Header header;
    header.version = qFromLittleEndian<quint32>(bytes.data() + VersionAt);
    if (!std::equal(std::begin(Magic), std::end(Magic), bytes.cbegin()) || header.version > Version)
        return {};
    header.jsonOffset = qFromLittleEndian<quint64>(bytes.data() + JsonOffsetAt);
    header.jsonSize = qFromLittleEndian<quint64>(bytes.data() + JsonSizeAt);
    header.dataOffset = qFromLittleEndian<quint64>(bytes.data() + DataOffsetAt);
    header.dataFormat = header.version >= 2 ? qFromLittleEndian<quint32>(bytes.data() + DataFormatAt) : 0;
    return header;
}

std::optional<QJsonObject> VeskFileFormat::readJson(QIODevice &device, const Header &header, QString &error)
{
    error = misfit(header, quint64(std::max<qint64>(device.size(), 0)));
    if (!error.isEmpty())
        return {};
    QByteArray json(qsizetype(header.jsonSize), Qt::Uninitialized);
    // Fewer bytes only of a file that shrinks at this moment, or that cannot be read.
    const bool whole =
        device.seek(qint64(header.jsonOffset)) && device.read(json.data(), json.size()) == json.size();
    if (!whole) {
        error = QStringLiteral("the description cannot be read");
        return {};
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (document.isNull()) {
        error = parseError.errorString();
        return {};
    }
    if (!document.isObject()) {
        error = QStringLiteral("the description is no object");
        return {};
    }
    return document.object();
}

std::optional<qint64> VeskFileFormat::framePosition(qint64 dataOffset, quint32 frameSize, qint64 fr,
                                                    qint64 firstFr)
{
    qint64 position = 0;
    if (fr < firstFr || qSubOverflow(fr, firstFr, &position) ||
        qMulOverflow(position, qint64(frameSize), &position) || qAddOverflow(position, dataOffset, &position))
        return {};
    return position;
}

QByteArray VeskFileFormat::readRecords(QIODevice &device, std::optional<qint64> position, quint32 frameSize,
                                       qint64 frames)
{
    if (!position || frameSize > MaxFrameSize || frames < 0)
        return {};
    const qint64 held = device.size() - *position;
    if (held <= 0)
        return {};
    const qint64 wanted = frameSize > 0 && frames > held / frameSize ? held : frames * frameSize;
    QByteArray records(qsizetype(wanted), Qt::Uninitialized);
    const qint64 read = device.seek(*position) ? device.read(records.data(), wanted) : 0;
    records.truncate(qsizetype(std::max<qint64>(read, 0)));
    return records;
}
