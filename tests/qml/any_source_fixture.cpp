#include "tests/qml/any_source_fixture.h"

#include "app/vesk_app.h"
#include "file/vesk_file.h"
#include "sim/config.h"
#include "tests/qml/vesk_file_fixture.h"

#include <QFile>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

bool AnySourceFixture::show(int what)
{
    switch (what) {
    case TheCamera:
        return startWithDrive();
    case TheTake:
        return startWithTake(1);
    case TheRecording:
        return startWithRecording(tabName(what));
    case TheFile:
        return showFile();
    default:
        startFolder();
        open();
        return window();
    }
}

bool AnySourceFixture::showFile()
{
    startFolder();
    open();
    QFile file(path(tabName(TheFile)));
    const QByteArray bytes = VeskFileFixture::bytes({.cfa = q4sim::CfaRGGB});
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    file.close();
    VeskFile *opened = written ? VeskFileFixture::openFile(file.fileName()) : nullptr;
    return opened && QTest::qWaitFor([opened] { return opened->valuesInit(); });
}

QString AnySourceFixture::tabName(int what)
{
    switch (what) {
    case TheTake:
        return u"Take 1"_s;
    case TheRecording:
        return u"wheel.vesk"_s;
    case TheFile:
        return u"a.vesk"_s;
    default:
        return u"Simulated Q4"_s;
    }
}

QStringList AnySourceFixture::end()
{
    const QStringList warnings = DriveFixture::end();
    VeskApp::instance()->settings()->remove(u"open"_s);
    return warnings;
}
