#include "fuzz/fuzz_application.h"
#include "save/file_name_template.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

namespace
{
/** Digits that the program pads a number to at most. */
constexpr qint64 MostDigits = 255;

struct Piece {
    enum { Text, Frame, Sequence } kind = Text;
    std::u16string text;
    qint64 width = 0;
};

/** Decimal digits with a sign or without, blanks around them; 0 for what is none or no int. */
qint64 numberIn(std::u16string_view text)
{
    const auto blank = [](char16_t c) { return QChar(c).isSpace(); };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+'))
        text.remove_prefix(1);
    qint64 value = 0;
    for (const char16_t c : text) {
        if (c < u'0' || c > u'9')
            return 0;
        value = std::min(value * 10 + (c - u'0'), qint64(1) << 40);
    }
    value = negative ? -value : value;
    return value == qint64(int(value)) ? value : 0;
}

/** The fields between the colons. */
std::vector<std::u16string> fields(const std::u16string &text)
{
    std::vector<std::u16string> result(1);
    for (const char16_t c : text) {
        if (c == u':')
            result.emplace_back();
        else
            result.back() += c;
    }
    return result;
}

Piece pieceOf(const std::u16string &text)
{
    const std::vector<std::u16string> parts = fields(text);
    const bool isFrame = parts[0] == u"fr";
    if (!isFrame && parts[0] != u"seq") {
        Piece piece;
        for (const std::u16string &part : parts)
            piece.text += part;
        return piece;
    }
    return {isFrame ? Piece::Frame : Piece::Sequence, {}, parts.size() > 1 ? numberIn(parts[1]) : 0};
}

/**
 * Letter by letter: an opening bracket reaches to the next closing one of the same line; without one it is
 * dropped, as is a closing bracket by itself.
 */
std::vector<Piece> piecesOf(const std::u16string &name)
{
    std::vector<Piece> pieces;
    for (std::size_t at = 0; at < name.size();) {
        std::size_t end = name.find_first_of(u"<>", at);
        if (end != at) {
            end = std::min(end, name.size());
            pieces.push_back(pieceOf(name.substr(at, end - at)));
            at = end;
            continue;
        }
        end = name[at] == u'<' ? name.find_first_of(u">\n", at) : std::u16string::npos;
        if (end == std::u16string::npos || name[end] != u'>') {
            ++at;
            continue;
        }
        pieces.push_back(pieceOf(name.substr(at + 1, end - at - 1)));
        at = end + 1;
    }
    return pieces;
}

/** Base 10, with zeros between a sign and the digits. */
std::u16string padded(qint64 value, qint64 width)
{
    std::string digits = std::to_string(value);
    const std::string sign = value < 0 ? "-" : "";
    digits.erase(0, sign.size());
    const qint64 missing = std::min(width, MostDigits) - qint64(sign.size() + digits.size());
    digits.insert(0, std::size_t(std::max<qint64>(missing, 0)), '0');
    digits.insert(0, sign);
    return {digits.begin(), digits.end()};
}

qint64 around(qint64 a, qint64 b)
{
    return qint64(quint64(a) + quint64(b));
}

std::u16string expanded(const std::vector<Piece> &pieces, qint64 frame, qint64 sequence)
{
    std::u16string name;
    for (const Piece &piece : pieces) {
        if (piece.kind == Piece::Text)
            name += piece.text;
        else
            name += padded(piece.kind == Piece::Frame ? frame : sequence, piece.width);
    }
    return name;
}

/** Every result is that of the slow reading, and no longer than the text and its numbers can be. */
void compare(const FileNameTemplate &name, const std::vector<Piece> &pieces, qint64 index)
{
    const QString expansion = name.expand(index);
    require(expansion.toStdU16String() ==
            expanded(pieces, around(name.startFr(), index), around(name.seq(), index)));
    require(name.filePath(index, QStringLiteral(" (2)")) ==
            name.folder() + QLatin1Char('/') + expansion + QStringLiteral(" (2).") + name.ext());
    require(name.elements().size() == qsizetype(pieces.size()));
    qint64 most = 0;
    bool numbered = false;
    for (const FileNameElement &element : name.elements()) {
        const bool isText = element.type == FileNameElement::Text;
        // An opening bracket inside of brackets is part of their text.
        require(!isText ||
                (!element.text.contains(QLatin1Char(':')) && !element.text.contains(QLatin1Char('>'))));
        most += isText ? element.text.size() : MostDigits;
        numbered |= !isText;
    }
    require(expansion.size() <= most);
    require(name.hasFrameTag() == numbered);
}

/** Images of one save must not overwrite each other. */
void tellApart(const FileNameTemplate &name, qint64 index)
{
    constexpr qint64 Top = std::numeric_limits<qint64>::max() / 4;
    const std::array<qint64, 4> numbers{name.startFr(), name.seq(), index, Top};
    if (!name.hasFrameTag() || *std::min_element(numbers.begin(), numbers.end()) < 0 ||
        *std::max_element(numbers.begin(), numbers.end()) > Top)
        return;
    require(name.expand(index) != name.expand(index + 1));
    require(name.expand(index) != name.expand(index / 2 + Top));
}
} // namespace

/**
 * Format in one byte, first frame and frame index in eight each, then the name as the operator types it;
 * behind a null character, what is appended to it.
 */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzApplication::instance();
    if (size < 17)
        return 0;
    const auto format = Util::Format(data[0] % 4);
    const auto startFr = qFromLittleEndian<qint64>(data + 1);
    const auto index = qFromLittleEndian<qint64>(data + 9);
    const QByteArray typed(reinterpret_cast<const char *>(data) + 17, qsizetype(size - 17));
    const qsizetype end = typed.indexOf('\0');
    const QString first = QString::fromUtf8(end < 0 ? typed : typed.first(end));
    // Nobody types null characters.
    const QString second = QString::fromUtf8(end < 0 ? QByteArray() : typed.sliced(end + 1)).remove(QChar());

    FileNameTemplate name(QStringLiteral("/folder"), first, format, startFr);
    std::vector<Piece> pieces = piecesOf(first.toStdU16String());
    compare(name, pieces, index);
    tellApart(name, index);
    require(format != Util::FormatTiff || name.seq() == 0);

    const std::vector<Piece> more = piecesOf(second.toStdU16String());
    name.setName(second, true);
    pieces.insert(pieces.end(), more.begin(), more.end());
    compare(name, pieces, index);
    name.setName(second, false);
    compare(name, more, index);
    return 0;
}
