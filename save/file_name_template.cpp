#include "save/file_name_template.h"

#include "app/vesk_app.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{
struct Tag {
    QLatin1StringView name;
    int type;
    bool takesWidth;
};

constexpr Tag Tags[] = {
    {"fr"_L1, FileNameElement::FrameNumber, true},
    {"seq"_L1, FileNameElement::SequenceNumber, true},
};

/** No file system takes a longer name, and a typing slip must not fill the memory with zeros. */
constexpr int MaxWidth = 255;

QString extension(Util::Format format)
{
    switch (format) {
    case Util::FormatVesk:
        return u"vesk"_s;
    case Util::FormatAvi:
        return u"avi"_s;
    case Util::FormatMp4:
        return u"mp4"_s;
    case Util::FormatTiff:
        return u"tiff"_s;
    }
    return {};
}

/** Text that reads like a tag is one, with brackets or without. A colon never reaches a file name. */
FileNameElement parsedElement(const QString &text)
{
    FileNameElement element{FileNameElement::Text, text, 0};
    for (const Tag &tag : Tags) {
        if (text.section(u':', 0, 0) != tag.name)
            continue;
        element.type = tag.type;
        if (tag.takesWidth)
            element.width = text.section(u':', 1, 1).toInt();
        return element;
    }
    element.text.remove(u':');
    return element;
}

/** The numbers come from files and settings and may lie at the end of the scale, where they wrap. */
qlonglong wrappedSum(qlonglong a, qlonglong b)
{
    return qlonglong(qulonglong(a) + qulonglong(b));
}

QString number(qlonglong value, int width)
{
    return u"%1"_s.arg(value, std::clamp(width, 0, MaxWidth), 10, QChar(u'0'));
}

QString numberedSuffix(qlonglong number)
{
    return u" (%1)"_s.arg(number);
}
} // namespace

FileNameTemplate::FileNameTemplate(const QString &folder, const QString &fileName, Util::Format format,
                                   qlonglong startFr)
    : m_folder(folder), m_ext(extension(format)), m_startFr(startFr)
{
    setName(fileName, false);
    if (format == Util::FormatTiff)
        return;
    VeskApp *app = VeskApp::instance();
    const QString key = u"save/filename_seq"_s;
    m_seq = app->setting(key, 0).toLongLong();
    if (hasElement(FileNameElement::SequenceNumber))
        app->setSetting(key, wrappedSum(m_seq, 1));
}

void FileNameTemplate::setName(const QString &text, bool append)
{
    if (!append)
        m_elements.clear();
    static const QRegularExpression pieces(u"<(.*?)>|([^<>]+)"_s);
    for (const QRegularExpressionMatch &match : pieces.globalMatch(text))
        m_elements.append(parsedElement(match.hasCaptured(1) ? match.captured(1) : match.captured(0)));
}

QString FileNameTemplate::expand(qlonglong frameIndex) const
{
    QString name;
    for (const FileNameElement &element : m_elements) {
        switch (element.type) {
        case FileNameElement::FrameNumber:
            name += number(wrappedSum(m_startFr, frameIndex), element.width);
            break;
        case FileNameElement::SequenceNumber:
            name += number(wrappedSum(m_seq, frameIndex), element.width);
            break;
        default:
            name += element.text;
        }
    }
    return name;
}

QString FileNameTemplate::filePath(qlonglong frameIndex, const QString &suffix) const
{
    return m_folder + u'/' + expand(frameIndex) + suffix + u'.' + m_ext;
}

bool FileNameTemplate::hasElement(int type) const
{
    return std::any_of(m_elements.cbegin(), m_elements.cend(),
                       [type](const FileNameElement &element) { return element.type == type; });
}

bool FileNameTemplate::hasFrameTag() const
{
    return hasElement(FileNameElement::FrameNumber) || hasElement(FileNameElement::SequenceNumber);
}

qlonglong FileNameTemplate::nextFreeSuffixNumber(qlonglong frameIndex) const
{
    qlonglong number = 2;
    while (QFile::exists(filePath(frameIndex, numberedSuffix(number))))
        ++number;
    return number;
}

QString FileNameTemplate::freeSuffix(qlonglong frameIndex) const
{
    if (!QFile::exists(filePath(frameIndex, {})))
        return {};
    return numberedSuffix(nextFreeSuffixNumber(frameIndex));
}
