#include "app/arithmetic.h"
#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "file/vesk_file_reader.h"
#include "fuzz/fuzz_application.h"
#include "take/raw_frame.h"

#include <QBuffer>
#include <QFile>

#include <array>
#include <limits>

#include <sys/mman.h>
#include <unistd.h>

namespace
{
/** A file in memory with these bytes, under a path that any handle can open. */
QString pathOf(const std::uint8_t *data, std::size_t size)
{
    static const int handle = memfd_create("input", 0);
    require(ftruncate(handle, 0) == 0 && pwrite(handle, data, size, 0) == ssize_t(size));
    return QStringLiteral("/proc/self/fd/%1").arg(handle);
}

void readFrames(VeskFile &file, std::size_t size)
{
    const std::array<qint64, 9> numbers{file.fr(),
                                        saturatedSum(file.fr(), 1),
                                        file.aFr(),
                                        file.bFr(),
                                        0,
                                        -1,
                                        1LL << 33,
                                        std::numeric_limits<qint64>::min(),
                                        std::numeric_limits<qint64>::max()};
    for (const qint64 fr : numbers) {
        RawFrame frame;
        require(file.getFrame(&frame, fr) == 0);
        require(std::size_t(frame.data().size()) <= size);
        require(frame.imgSize() == quint32(frame.width()) * frame.height());
    }
}

/** As a save reads the file, from its first frame on. */
void streamFrames(VeskFile &file, std::size_t size)
{
    QFile device(file.fileName());
    require(device.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    RawFrame geometry;
    file.getFrame(&geometry, 0);
    VeskFileReaderWorker worker(&device, {.startFr = file.aFr(),
                                          .frCnt = file.frCntValue()->variant().toInt(),
                                          .firstFr = file.firstFrValue()->variant().toInt(),
                                          .dataOffset = file.dataOffset(),
                                          .frameSize = geometry.metaSize() + geometry.imgSize()});
    bool ended = false;
    qint64 bytes = 0;
    QObject::connect(&worker, &VeskFileReaderWorker::readyRead, &worker,
                     [&](const QByteArray &data, qlonglong frames, qlonglong, qlonglong) {
                         require(!ended && frames <= VeskFileReaderWorker::MaxChunkFrames);
                         bytes += data.size();
                     });
    QObject::connect(&worker, &VeskFileReaderWorker::finished, &worker, [&ended] {
        require(!ended);
        ended = true;
    });
    for (int chunk = 0; chunk < 50; ++chunk)
        worker.read();
    require(bytes <= qint64(size));
}

/** What a save makes of the values can be read again. */
void saveAgain(const VeskFile &file)
{
    VeskFileFormat::Preamble preamble = VeskFileFormat::preamble(file.valuesToJson(), -5, 7);
    QBuffer device(&preamble.bytes);
    require(device.open(QIODevice::ReadOnly));
    const VeskFileFormat::Header header =
        VeskFileFormat::readHeader(device).value_or(VeskFileFormat::Header());
    require(header.dataOffset == quint64(preamble.dataOffset));
    require(header.dataOffset % 4096 == 0 && header.dataOffset >= header.jsonOffset + header.jsonSize);
    QString error;
    const QJsonObject values = VeskFileFormat::readJson(device, header, error).value_or(QJsonObject());
    require(values.value(QLatin1String("last_fr")) == QJsonValue(1));
}
} // namespace

/** Most inputs end here, a hundred times as fast as with a source around them. */
static bool isRefused(const std::uint8_t *data, std::size_t size)
{
    QBuffer device;
    device.setData(reinterpret_cast<const char *>(data), qsizetype(size));
    require(device.open(QIODevice::ReadOnly));
    const auto header = VeskFileFormat::readHeader(device);
    QString error;
    return !header || !VeskFileFormat::readJson(device, *header, error);
}

/** A native file: it is refused, or what it says it holds is what it has. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzApplication &application = FuzzApplication::instance();
    if (isRefused(data, size))
        return 0;
    {
        VeskFile file(pathOf(data, size), VeskApp::instance());
        require(file.open());
        readFrames(file, size);
        streamFrames(file, size);
        saveAgain(file);
        file.close();
    }
    application.tidy();
    return 0;
}
