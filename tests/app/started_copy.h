#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/**
 * A test that starts itself again, in folders of its own, because a process has one application and one
 * message handler. Its main() tells the two apart by the environment.
 */
class StartedCopy
{
public:
    struct Run {
        int exitCode;
        bool crashed;
        QString errorOutput;
    };

    /** The program of the test. */
    static inline QString self;
    static bool isCopy() { return qEnvironmentVariableIsSet("VESK_TEST_CHILD"); }

    /** Waits for its end. Of the variables each is NAME=VALUE. */
    Run start(const QStringList &arguments = {}, const QStringList &variables = {})
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("VESK_TEST_CHILD", "1");
        environment.insert("XDG_CONFIG_HOME", m_dir.filePath("config"));
        environment.insert("XDG_DATA_HOME", m_dir.filePath("data"));
        for (const QString &variable : variables)
            environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        process.setProcessEnvironment(environment);
        process.start(self, arguments);
        if (!process.waitForFinished(60000))
            return {-1, true, "no end"};
        return {process.exitCode(), process.exitStatus() == QProcess::CrashExit,
                QString::fromUtf8(process.readAllStandardError())};
    }

    QString path(const QString &name) const { return m_dir.filePath(name); }
    QString configPath() const { return path("config/Morvane/VESK.json"); }
    QString logPath() const { return path("data/Morvane/VESK/log.txt"); }

    void writeSettings(const QByteArray &text)
    {
        QVERIFY(QDir().mkpath(path("config/Morvane")));
        QFile file(configPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    static QString contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

private:
    QTemporaryDir m_dir;
};
