#include "tests/qml/vesk_file_fixture.h"

#include "app/vesk_app.h"
#include "file/vesk_file.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

static constexpr int Width = 64;
static constexpr int Height = 48;

static QByteArray record(int frame)
{
    QByteArray bytes = HandMade::little(quint64(frame), 4) + HandMade::little(500, 4);
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x)
            bytes.append(char(x + 2 * frame));
    }
    return bytes;
}

QByteArray VeskFileFixture::bytes(const Recording &recording)
{
    const int count = recording.lastFr - recording.firstFr + 1;
    const QJsonObject json{{u"first_fr"_s, recording.firstFr},
                           {u"last_fr"_s, recording.lastFr},
                           {u"fr_cnt"_s, count},
                           {u"acq"_s, QJsonObject{{u"res"_s, u"%1x%2"_s.arg(Width).arg(Height)},
                                                  {u"fr_rate"_s, 1000.4},
                                                  {u"exp_time"_s, 499.876},
                                                  {u"fsync_mode"_s, recording.fsyncMode},
                                                  {u"corr_mode"_s, recording.corrMode}}},
                           {u"camera"_s, QJsonObject{{u"name"_s, u"Lab 7"_s},
                                                     {u"serial"_s, u"Q4-00012"_s},
                                                     {u"model"_s, u"Q4"_s},
                                                     {u"cfa"_s, recording.cfa},
                                                     {u"fw_ver"_s, u"3.2.1"_s}}},
                           {u"adjust"_s, QJsonObject{{u"cfa"_s, recording.cfa}}},
                           {u"meta"_s, QJsonObject{{u"size"_s, 8}, {u"year_offset"_s, 1767225600}}},
                           {u"lens"_s, recording.lens}};
    QByteArray frames;
    for (int frame = 0; frame < count; ++frame)
        frames += record(frame);
    return HandMade::usual(QJsonDocument(json).toJson(QJsonDocument::Compact), frames);
}

QString VeskFileFixture::write(const QString &name, const Recording &recording) const
{
    return write(name, bytes(recording));
}

QString VeskFileFixture::folder() const
{
    return QFileInfo(path(u"a.vesk"_s)).path();
}

VeskFile *VeskFileFixture::openFile(const QString &path)
{
    const qsizetype before = VeskApp::instance()->veskObjects().size();
    VeskApp::instance()->openVeskFile(QUrl::fromLocalFile(path).toString());
    const QList<VeskObject *> &sources = VeskApp::instance()->veskObjects();
    return sources.size() == before + 1 ? qobject_cast<VeskFile *>(sources.last()) : nullptr;
}

VeskFile *VeskFileFixture::start(const Recording &recording)
{
    open();
    VeskFile *file = openFile(write(u"a.vesk"_s, recording));
    const bool shown = file && QTest::qWaitFor([file] { return !file->imgFrame()->image().isNull(); });
    settle(window());
    return shown ? file : nullptr;
}

QQuickItem *VeskFileFixture::tab(const QString &name) const
{
    QAccessibleInterface *found = element(name, QAccessible::PageTab);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

QStringList VeskFileFixture::end()
{
    const QStringList warnings = ViewFixture::end();
    VeskApp::instance()->settings()->remove(u"playback"_s);
    VeskApp::instance()->settings()->remove(u"open"_s);
    return warnings;
}
