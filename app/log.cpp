#include "app/log.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QFile>
#include <QLibraryInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTextStream>
#include <QVersionNumber>

#include <csignal>

namespace
{
QString logFilePath()
{
    return appDataFolder() + QStringLiteral("/log.txt");
}

QString logLine(QtMsgType type, const QString &message)
{
    switch (type) {
    case QtDebugMsg:
        return QStringLiteral("Debug: %1").arg(message);
    case QtWarningMsg:
        return QStringLiteral("Warning: %1").arg(message);
    case QtCriticalMsg:
        return QStringLiteral("Critical: %1").arg(message);
    case QtFatalMsg:
        return QStringLiteral("Fatal: %1").arg(message);
    case QtInfoMsg:
        return QStringLiteral("Info: %1").arg(message);
    }
    return QString();
}

/** Runs on whichever thread logs; each message opens, appends and closes by itself, so none needs a lock. */
void logMessageHandler(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    QFile file(logFilePath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    QTextStream stream(&file);
    stream << logLine(type, message) << '\n';
}

void writeBanner(const QSettings &settings)
{
    const struct {
        const char *label;
        QString value;
    } rows[] = {
        {"VESK version:", QCoreApplication::applicationVersion()},
        {"Host:", QSysInfo::machineHostName()},
        {"Product:", QSysInfo::prettyProductName()},
        {"Type:", QSysInfo::productType()},
        {"Version:", QSysInfo::productVersion()},
        {"Boot ID:", QString::fromLatin1(QSysInfo::bootUniqueId())},
        {"Build:", QSysInfo::buildAbi()},
        {"CPU:", QSysInfo::buildCpuArchitecture()},
        {"Kernel:", QSysInfo::kernelType()},
        {"Kernel version:", QSysInfo::kernelVersion()},
        {"Qt version:", QLibraryInfo::version().toString()},
        {"Qt path:", QLibraryInfo::path(QLibraryInfo::PrefixPath)},
        {"Settings path:", settings.fileName()},
    };
    qDebug().noquote() << QDateTime::currentDateTime().toString(Qt::TextDate);
    for (const auto &row : rows)
        qDebug().noquote() << row.label << row.value;
}
} // namespace

QString appDataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

void initLog(const QSettings &settings)
{
    const int level = settings.value(QStringLiteral("vesk/log"), 0).toInt();
    qDebug() << "vesk/log =" << level;
    if (level > 0) {
        qInstallMessageHandler(logMessageHandler);
        QFile::remove(logFilePath());
    }
    writeBanner(settings);
}

void segfaultHandler(int signal)
{
    qCritical().noquote() << QStringLiteral("segfault %1").arg(signal);
    std::signal(signal, SIG_DFL);
}
