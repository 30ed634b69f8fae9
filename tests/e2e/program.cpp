#include "tests/e2e/program.h"

#include <QDir>
#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

bool Program::start(const QString &display)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        environment.insert(QString::fromLatin1(name), m_folder);
    environment.insert(u"HOME"_s, m_folder);
    environment.insert(u"DISPLAY"_s, display);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"QT_FORCE_STDERR_LOGGING"_s, u"1"_s);
    environment.insert(u"QT_MESSAGE_PATTERN"_s,
                       u"%{if-warning}Warning: %{endif}%{if-critical}Critical: %{endif}"
                       "%{if-fatal}Fatal: %{endif}%{message}"_s);
    // Without a desktop nobody answers Qt's question for its portal, and Qt leaks what waits for the answer.
    environment.insert(u"QT_NO_XDG_DESKTOP_PORTAL"_s, u"1"_s);
    // The keyboard library copies strings by their length, which the strict check takes for an overrun.
    if (environment.contains(u"ASAN_OPTIONS"_s))
        environment.insert(u"ASAN_OPTIONS"_s,
                           environment.value(u"ASAN_OPTIONS"_s) + u":strict_string_checks=0"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    m_process.setProcessEnvironment(environment);
    if (!QDir().mkpath(workingFolder()) || !QDir().mkpath(documents()))
        return false;
    m_process.setWorkingDirectory(workingFolder());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(QString::fromLocal8Bit(VESK_PROGRAM), {});
    return m_process.waitForStarted(10000);
}

bool Program::keepSettings(const QByteArray &json) const
{
    const QString folder = m_folder + u"/Morvane"_s;
    QFile file(folder + u"/VESK.json"_s);
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) && file.write(json) == json.size();
}

std::optional<int> Program::exitCode(int ms)
{
    if (running() && !m_process.waitForFinished(ms))
        return {};
    if (m_process.exitStatus() != QProcess::NormalExit)
        return {};
    return m_process.exitCode();
}

QStringList Program::complaints()
{
    // A process that is waited for by conditions on the screen is not read by
    // anyone else.
    m_process.waitForReadyRead(1);
    QStringList found;
    const QStringList lines = QString::fromUtf8(m_process.readAllStandardOutput()).split(u'\n');
    for (const QString &line : lines) {
        for (const auto word :
             {"QML "_L1, "Binding loop"_L1, "undefined"_L1, "TypeError"_L1, "ReferenceError"_L1,
              "Warning:"_L1, "Critical:"_L1, "Fatal:"_L1, "Sanitizer"_L1, "runtime error"_L1}) {
            if (line.contains(word)) {
                found.append(line);
                break;
            }
        }
    }
    return found;
}
