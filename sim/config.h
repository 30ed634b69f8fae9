#pragma once

#include "sim/clock.h"
#include "sim/drive.h"
#include "sim/footage.h"

#include <QHostAddress>
#include <QMap>
#include <QStringList>

#include <memory>

namespace q4sim
{

/// Numbers of camera/cfa.
enum Cfa { CfaMono = 0, CfaRGGB = 1, CfaGBRG = 2 };

/// Names of the size headers of a frame reply: Img-Width and so on, or Fr-Width and so on.
enum class HeaderFamily { Img, Fr };

/// New firmware names itself by a text and has all features; old firmware by a number and has few.
enum class Firmware { New, Old };

/// Which free partition a recording goes to: the first one, or the next one behind the last recording.
enum class PartitionOrder { First, Next };

/// Top-level object that holds year_offset.
enum class YearOffsetPlace { Meta, Time };

/// Formats of a camera's video output, all of them.
QStringList allVideoFormats();

/// Three recordings of 640x480.
QList<RecordingOrder> usualRecordings();

/// Everything that is decided before a camera is switched on.
struct Config {
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = 80;
    bool discovery = true; ///< answers broadcasts on UDP port 8890

    QString name = QStringLiteral("Simulated Q4");
    QString serial = QStringLiteral("Q4-00001");
    QString model = QStringLiteral("Q4");
    int cfa = CfaRGGB;
    QStringList resolutions; ///< "WxH"; empty: the list of the colour pattern. The first is set at start
    HeaderFamily headerFamily = HeaderFamily::Img;
    Firmware firmware = Firmware::New;
    YearOffsetPlace yearOffsetPlace = YearOffsetPlace::Meta;
    qint64 memoryBytes = 8LL << 30; ///< frame memory; frames are computed, so this costs nothing
    double frameRate = 1000.0;      ///< frames per second at start
    int partitions = 4;
    PartitionOrder partitionOrder = PartitionOrder::First;
    int blackRefSlots = 8;
    bool hasLens = true;
    bool hasShutter = true;
    bool hasSsd = true;
    Medium medium = Medium::Formatted; ///< in the drive's slot at start, when there is one
    qint64 driveBytes = 2000000000000;
    qint64 driveBytesPerSecond = 500000000;
    QList<RecordingOrder> recordings = usualRecordings(); ///< on a formatted drive when it is inserted
    int afSwitch = 0;                                     ///< lens/af_switch; 0: the camera may focus
    bool shutterFails = false;
    double syncFps = 0.0; ///< signal at the sync input, frames per second; 0: none

    /// Numbers of "features" that differ from those of firmware and equipment; -1: the key is missing.
    QMap<QString, int> features;
    QStringList videoFormats =
        allVideoFormats();         ///< that can be set; 1920x1080p30 is set at start, or else the first
    bool tellsVideoFormats = true; ///< false: there is no video/valid_format
    QByteArray rejectedFirmware;   ///< a file that begins with these bytes is rejected
    QList<TakeOrder> takes;        ///< that are there at start, made in this order
    quint32 seed = 1;              ///< of the scene's noise
    std::shared_ptr<Clock> clock;  ///< none: the machine's
};

/// A monochrome camera without lens, shutter, drive and features, of one video format.
Config bareConfig();

/// Resolutions a camera of this colour pattern offers by itself, largest first.
QStringList defaultResolutions(int cfa);

/// What is wrong with the configuration, in one sentence; empty if nothing.
QString configError(const Config &config);

/// Reads "WxH". False unless both are even decimals, 16 to 4096.
bool parseResolution(const QString &text, int *width, int *height);

} // namespace q4sim
