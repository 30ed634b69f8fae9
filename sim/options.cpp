#include "sim/options.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace q4sim
{

namespace
{

struct Option {
    const char *name;
    const char *value; ///< empty: a switch
    const char *initial;
    const char *help;
};

constexpr std::array options = {
    Option{"address", "ip", "127.0.0.1", "Address to answer on; give it again for one more camera."},
    Option{"port", "number", "80", "TCP port."},
    Option{"no-discovery", "", "", "Do not answer broadcasts."},
    Option{"bare", "", "",
           "Monochrome, without lens, shutter, drive and features, and with one video format."},
    Option{"name", "text", "Simulated Q4", "Name; further cameras get a number behind it."},
    Option{"serial", "text", "Q4-00001", "Serial; further cameras get a number behind it."},
    Option{"pattern", "mono|rggb|gbrg", "", "Colour pattern of the sensor; rggb, and mono when bare."},
    Option{"resolutions", "list", "", "Resolutions such as 640x480,320x240; the first is set at start."},
    Option{"firmware", "new|old", "new",
           "Old firmware has a number, few features, fr headers and time/year_offset."},
    Option{"headers", "img|fr", "", "Family of the frame headers."},
    Option{"year-offset", "meta|time", "", "Object that holds year_offset."},
    Option{"memory", "MiB", "8192", "Frame memory."},
    Option{"partitions", "count", "4", "Partitions at start."},
    Option{"partition-order", "first|next", "first",
           "Where a recording goes: to the first free partition, or to the next one behind the last."},
    Option{"frame-rate", "fps", "1000", "Frame rate at start."},
    Option{"black-refs", "count", "8", "Black references that can be taken."},
    Option{"no-lens", "", "", "No lens is mounted."},
    Option{"af-switch", "0|1", "0", "Switch of the lens; 1: only by hand."},
    Option{"no-shutter", "", "", "The camera has no shutter."},
    Option{"shutter-fails", "", "", "The shutter fails at each move."},
    Option{"no-ssd", "", "", "No drive is inserted."},
    Option{"ssd", "formatted|blank|broken", "formatted", "What the inserted drive is like."},
    Option{"ssd-size", "MB", "2000000", "Size of the drive."},
    Option{"ssd-speed", "MB/s", "500", "How fast the drive is written."},
    Option{"recording", "json", "",
           "A recording on the drive in place of the three usual ones: a name, the time of its writing in "
           "seconds since 1970, and frames as for --take, such as "
           "{\"name\":\"a.vesk\",\"time\":1700000000,\"last\":99}. Give it again for one more."},
    Option{"recordings", "count", "", "So many small recordings on the drive, named by number."},
    Option{
        "feature", "name=number", "",
        "One of corr_mode, q4fw, lens, shtr, ssd-format, ssd-save; -1: the camera does not tell it. Give it "
        "again for one more."},
    Option{"video-formats", "list", "", "Video formats such as 1280x720p30,1280x720p60; \"none\": not told."},
    Option{"sync-fps", "fps", "0", "Signal at the sync input; 0: none."},
    Option{"reject-firmware", "text", "", "Firmware files that begin with this are rejected."},
    Option{"take", "json", "",
           "A take that is there at start, as for /sim/take, such as "
           "{\"first\":-100,\"last\":99,\"rate\":59.94}. "
           "Give it again for one more."},
    Option{"seed", "number", "1", "Seed of the noise."},
};

// Position of a word in a list separated by "|"; -1 when it is not there.
int choice(const QString &word, const char *words)
{
    return static_cast<int>(QString::fromLatin1(words).split(u'|').indexOf(word));
}

class Reader
{
public:
    Reader(const QCommandLineParser &parser, QString *error) : m_parser(parser), m_error(error) {}

    qint64 number(const char *name, qint64 min, qint64 max)
    {
        bool good = false;
        const qint64 value = text(name).toLongLong(&good);
        if (!good || value < min || value > max)
            fail(QStringLiteral("--%1 must be %2 to %3").arg(QLatin1StringView(name)).arg(min).arg(max));
        return value;
    }

    int word(const char *name, const char *words)
    {
        const int index = choice(text(name), words);
        if (index < 0)
            fail(QStringLiteral("--%1 must be one of %2")
                     .arg(QLatin1StringView(name), QLatin1StringView(words)));
        return index;
    }

    double real(const char *name)
    {
        bool good = false;
        const double value = text(name).toDouble(&good);
        if (!good)
            fail(QStringLiteral("--%1 must be a number").arg(QLatin1StringView(name)));
        return value;
    }

    QString text(const char *name) const { return m_parser.value(QString::fromLatin1(name)); }
    QStringList texts(const char *name) const { return m_parser.values(QString::fromLatin1(name)); }
    bool isSet(const char *name) const { return m_parser.isSet(QString::fromLatin1(name)); }

    void fail(const QString &text)
    {
        if (m_error->isEmpty())
            *m_error = text;
    }

private:
    const QCommandLineParser &m_parser;
    QString *m_error;
};

void readEquipment(Reader &reader, Config *config)
{
    config->hasLens = config->hasLens && !reader.isSet("no-lens");
    config->afSwitch = reader.word("af-switch", "0|1");
    config->hasShutter = config->hasShutter && !reader.isSet("no-shutter");
    config->shutterFails = reader.isSet("shutter-fails");
    config->hasSsd = (config->hasSsd || reader.isSet("ssd")) && !reader.isSet("no-ssd");
    constexpr Medium media[] = {Medium::Formatted, Medium::Blank, Medium::Broken};
    config->medium = media[std::max(reader.word("ssd", "formatted|blank|broken"), 0)];
    const QStringList features = reader.texts("feature");
    for (const QString &feature : features) {
        bool good = false;
        config->features[feature.section(u'=', 0, 0)] = feature.section(u'=', 1).toInt(&good);
        if (!good)
            reader.fail(QStringLiteral("--feature must be name=number, not \"%1\"").arg(feature));
    }
    config->tellsVideoFormats = reader.text("video-formats") != u"none";
    if (config->tellsVideoFormats && reader.isSet("video-formats"))
        config->videoFormats = reader.text("video-formats").split(u',', Qt::SkipEmptyParts);
    config->syncFps = reader.real("sync-fps");
    config->rejectedFirmware = reader.text("reject-firmware").toUtf8();
}

// A count of recordings, each a minute after the one before, of 1 to 100 frames.
void makeRecordings(qint64 count, Config *config)
{
    config->recordings.clear();
    for (qint64 i = 0; i < count; ++i) {
        RecordingOrder order;
        order.name = QStringLiteral("run %1.vesk").arg(i + 1, 5, 10, QLatin1Char('0'));
        order.time = 1700000000 + i * 60;
        order.take.first = 0;
        order.take.last = i % 100;
        order.take.res = QStringLiteral("320x240");
        config->recordings.append(order);
    }
}

void readRecordings(Reader &reader, Config *config)
{
    config->driveBytes = reader.number("ssd-size", 0, 1 << 30) * 1000000;
    config->driveBytesPerSecond = reader.number("ssd-speed", 1, 1000000) * 1000000;
    if (reader.isSet("recordings"))
        makeRecordings(reader.number("recordings", 0, 100000), config);
    const QStringList texts = reader.texts("recording");
    if (reader.isSet("recording"))
        config->recordings.clear();
    for (const QString &text : texts) {
        const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
        QString error = QStringLiteral("not a JSON object");
        const auto order = document.isObject() ? readRecordingOrder(document.object(), &error) : std::nullopt;
        if (order)
            config->recordings.append(*order);
        else if (!text.isEmpty())
            reader.fail(QStringLiteral("--recording: %1").arg(error));
    }
}

void readTakes(Reader &reader, Config *config)
{
    const QStringList texts = reader.texts("take");
    for (const QString &text : texts) {
        const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
        QString error = QStringLiteral("not a JSON object");
        const auto order = document.isObject() ? readTakeOrder(document.object(), &error) : std::nullopt;
        if (order)
            config->takes.append(*order);
        else if (!text.isEmpty())
            reader.fail(QStringLiteral("--take: %1").arg(error));
    }
}

Config readCommon(Reader &reader)
{
    Config config = reader.isSet("bare") ? bareConfig() : Config();
    config.port = static_cast<quint16>(reader.number("port", 1, 65535));
    config.discovery = !reader.isSet("no-discovery");
    if (reader.isSet("pattern"))
        config.cfa = reader.word("pattern", "mono|rggb|gbrg");
    config.resolutions = reader.text("resolutions").split(u',', Qt::SkipEmptyParts);
    const bool old = reader.word("firmware", "new|old") == 1;
    config.firmware = old ? Firmware::Old : Firmware::New;
    const bool fr = reader.isSet("headers") ? reader.word("headers", "img|fr") == 1 : old;
    config.headerFamily = fr ? HeaderFamily::Fr : HeaderFamily::Img;
    const bool inTime = reader.isSet("year-offset") ? reader.word("year-offset", "meta|time") == 1 : old;
    config.yearOffsetPlace = inTime ? YearOffsetPlace::Time : YearOffsetPlace::Meta;
    config.memoryBytes = reader.number("memory", 1, 1 << 20) << 20;
    config.partitions = static_cast<int>(reader.number("partitions", 1, 1024));
    config.frameRate = reader.real("frame-rate");
    config.blackRefSlots = static_cast<int>(reader.number("black-refs", 0, 1000000));
    readEquipment(reader, &config);
    readTakes(reader, &config);
    readRecordings(reader, &config);
    const int order = reader.word("partition-order", "first|next");
    config.partitionOrder = order == 1 ? PartitionOrder::Next : PartitionOrder::First;
    config.seed = static_cast<quint32>(reader.number("seed", 0, std::numeric_limits<quint32>::max()));
    return config;
}

} // namespace

void addOptions(QCommandLineParser &parser)
{
    for (const Option &option : options) {
        parser.addOption({QString::fromLatin1(option.name), QString::fromLatin1(option.help),
                          QString::fromLatin1(option.value), QString::fromLatin1(option.initial)});
    }
}

QList<Config> readOptions(const QCommandLineParser &parser, QString *error)
{
    error->clear();
    Reader reader(parser, error);
    Config config = readCommon(reader);
    if (error->isEmpty())
        *error = configError(config);
    QList<Config> configs;
    const QStringList addresses = parser.values(QStringLiteral("address"));
    for (const QString &address : addresses) {
        if (!config.address.setAddress(address) && error->isEmpty())
            *error = QStringLiteral("\"%1\" is no address").arg(address);
        const QString suffix = configs.isEmpty() ? QString() : QStringLiteral(" %1").arg(configs.size() + 1);
        config.name = reader.text("name") + suffix;
        config.serial = reader.text("serial") + QString(suffix).replace(u' ', u'-');
        configs.append(config);
    }
    return error->isEmpty() ? configs : QList<Config>();
}

} // namespace q4sim
