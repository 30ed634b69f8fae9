#include "tests/e2e/save_dialog.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
constexpr QRgb highlight = 0xFFD25F15;

bool isWhite(QRgb colour)
{
    return qMin(qRed(colour), qMin(qGreen(colour), qBlue(colour))) > 180;
}

bool isLit(QRgb colour)
{
    return colour == highlight;
}

/// Of a progress bar, which is shaded; some pixels at the edges of letters are, too.
bool isOrange(QRgb colour)
{
    return qRed(colour) > 180 && qGreen(colour) > 60 && qGreen(colour) < 140 && qBlue(colour) < 60;
}

/// A native file as its bytes tell.
struct NativeFile {
    explicit NativeFile(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return;
        const QByteArray bytes = file.readAll();
        const auto number = [&](qsizetype at) {
            QDataStream stream(bytes.sliced(at, 8));
            stream.setByteOrder(QDataStream::LittleEndian);
            qint64 value = 0;
            stream >> value;
            return value;
        };
        if (bytes.size() < 36 || !bytes.startsWith("VESK"))
            return;
        json = QJsonDocument::fromJson(bytes.sliced(number(8), number(16))).object();
        records = bytes.sliced(number(24));
    }
    int first() const { return json["first_fr"_L1].toInt(); }
    int last() const { return json["last_fr"_L1].toInt(); }
    int count() const { return json["fr_cnt"_L1].toInt(); }
    qsizetype recordSize() const { return 640 * 480 + json["meta"_L1]["size"_L1].toInt(); }

    QJsonObject json;
    QByteArray records;
};
} // namespace

/// A recording is trimmed, saved in both forms, opened from its file, played and saved again in the real
/// program by mouse and keys; one save is cancelled, and at last the window closes in the middle of one.
class TestTakeSave : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void recordingIsTrimmed();
    void nativeFileHoldsTheTrimmedFrames();
    void imagesShowTheTrimmedFrames();
    void cancelledSaveLeavesNothingBehind();
    void nativeFileOpensFromTheListAndPlays();
    void openedFileIsSavedAgainByteByByte();
    void openedFileClosesFromItsMenu();
    void filmsShowTheTrimmedFrames_data();
    void filmsShowTheTrimmedFrames();
    void windowClosesInMidSave();

private:
    WindowLayout &layout() { return m_session.layout(); }
    std::optional<int> frame() const { return m_session.shown().frameNumber(); }
    void openTake();
    bool isComplete(int row);
    QString path(const QString &name) { return m_session.program().documents() + u'/' + name; }
    QStringList files(const QString &filter)
    {
        return QDir(m_session.program().documents()).entryList({filter}, QDir::Files, QDir::Name);
    }
    /// Clicks a place of the bar; the frame that then rests there.
    int rest(double place, QPoint beside = {});

    /// What a program tells that is given a film, on both channels.
    static QString run(const QString &program, const QStringList &arguments);

    Session m_session;
    SaveDialog m_dialog{m_session};
    int m_a = 0;
    int m_b = 0;
    int m_saves = 3; ///< in the list when the films begin
};

void TestTakeSave::initTestCase()
{
    QCOMPARE(m_session.start(), QString());
    QVERIFY(m_session.waitForLivePicture());
    QVERIFY(m_session.camera.put(u"/acq/trig_offset"_s, "300"));
}

void TestTakeSave::cleanup()
{
    if (QTest::currentTestFailed())
        m_session.keepPicture(u"failed-"_s + QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(m_session.program().complaints(), QStringList());
}

void TestTakeSave::openTake()
{
    m_session.click(layout().takeTab(1).center());
    layout().setPanel(WindowLayout::Panel::Take);
    QVERIFY(m_session.wait([&](const QImage &) { return frame().has_value(); }));
}

/// What is done can be opened.
bool TestTakeSave::isComplete(int row)
{
    const QRect button = layout().savesOpenButton(row);
    return QTest::qWaitFor([&] { return Session::count(m_session.window(), button, isWhite) > 20; }, 30000);
}

QString TestTakeSave::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
        return program + u" does not end"_s;
    return QString::fromUtf8(process.readAll()).trimmed();
}

int TestTakeSave::rest(double place, QPoint beside)
{
    m_session.click(layout().onBar(place) + beside);
    std::optional<int> before;
    m_session.wait([&](const QImage &) {
        QTest::qWait(400);
        return std::exchange(before, frame()) == frame() && frame();
    });
    return frame().value_or(-1'000'000);
}

void TestTakeSave::recordingIsTrimmed()
{
    const QPoint record = layout().widget(u"Record"_s).center();
    m_session.click(record);
    QTRY_COMPARE(m_session.camera.value(u"acq/state"_s).toInt(), 2);
    const QRect counted = layout().widget(u"Recorded Frames"_s);
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, counted, isWhite) > 20; }));
    m_session.click(record);
    QTRY_COMPARE(m_session.camera.value(u"acq/saved_takes"_s).toArray(), QJsonArray{1});
    QVERIFY(m_session.wait(
        [&](const QImage &now) { return Session::count(now, layout().takeTabIcon(1), isWhite) > 20; }));
    openTake();
    m_session.key(u"space"_s);
    m_a = rest(0.5);
    m_session.click(layout().startHere());
    m_b = rest(0.5, {40, 0});
    m_session.click(layout().endHere());
    QVERIFY2(m_b > m_a && m_b - m_a < 200, qPrintable(u"%1 to %2"_s.arg(m_a).arg(m_b)));
}

void TestTakeSave::nativeFileHoldsTheTrimmedFrames()
{
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center()));
    QVERIFY(m_dialog.setName(u"shot"_s));
    m_dialog.keepPicture(u"save-dialog"_s);
    QVERIFY(m_dialog.save());
    QVERIFY(isComplete(0));
    m_session.keepPicture(u"saves-complete"_s);
    const NativeFile file(path(u"shot.vesk"_s));
    QCOMPARE(file.first(), m_a);
    QCOMPARE(file.last(), m_b);
    QCOMPARE(file.count(), m_b - m_a + 1);
    QCOMPARE(file.records.size(), file.count() * file.recordSize());
}

void TestTakeSave::imagesShowTheTrimmedFrames()
{
    openTake();
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center()));
    QVERIFY(m_dialog.setName(u"img_<fr>"_s));
    QVERIFY(m_dialog.setFormat(3));
    m_dialog.keepPicture(u"save-dialog-images"_s);
    QVERIFY(m_dialog.save());
    QVERIFY(isComplete(1));
    QCOMPARE(files(u"img_*.tiff"_s).size(), m_b - m_a + 1);
    for (const int number : {m_a, (m_a + m_b) / 2, m_b}) {
        const QImage image(path(u"img_%1.tiff"_s.arg(number)));
        QCOMPARE(image.size(), QSize(640, 480));
        QCOMPARE(ShownPicture(image, image.rect(), {}).frameNumber(), number);
        QVERIFY(ShownPicture(image, image.rect(), {}).barsInPlace());
    }
}

void TestTakeSave::cancelledSaveLeavesNothingBehind()
{
    openTake();
    QVERIFY(m_session.camera.dripFrames(300, 300'000));
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center()));
    QVERIFY(m_dialog.setName(u"cancelled"_s));
    QVERIFY(m_dialog.setFormat(0));
    QVERIFY(m_dialog.save());
    QTRY_VERIFY(QFileInfo(path(u"cancelled.vesk"_s)).size() > 1'000'000);
    // The picture of the take stands still meanwhile, and tells so.
    openTake();
    const QPoint middle = layout().pictureArea().center();
    const QRect banner(middle - QPoint(96, 14), QSize(192, 28));
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, banner, isLit) > 400; }));
    m_session.keepPicture(u"save-banner"_s);
    // One more waits behind it.
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center()));
    QVERIFY(m_dialog.setName(u"waiting"_s));
    QVERIFY(m_dialog.save());
    const QRect bar(layout().savesRow(2).left() + 72 + 240, layout().savesRow(2).top() + 20, 160, 8);
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, bar, isOrange) > 150; }));
    m_session.keepPicture(u"saves-running"_s);
    m_session.click(layout().savesCloseButton(3).center());
    m_session.click(layout().savesCloseButton(2).center());
    QTRY_COMPARE(files(u"cancelled*"_s), QStringList());
    m_session.move(layout().savesRow(1).center());
    QVERIFY(m_session.wait([&](const QImage &now) { return Session::count(now, bar, isOrange) < 60; }));
    m_session.keepPicture(u"saves-cancelled"_s);
    m_session.click(layout().savesCloseButton(2).center());
    QVERIFY(m_session.wait([&](const QImage &now) {
        return Session::count(now, layout().savesCloseButton(2), isWhite) == 0 &&
               Session::count(now, layout().savesCloseButton(1), isWhite) > 5;
    }));
    QCOMPARE(files(u"waiting*"_s), QStringList());
    QVERIFY(m_session.camera.clearFaults());
}

void TestTakeSave::nativeFileOpensFromTheListAndPlays()
{
    m_session.click(layout().savesOpenButton(0).center());
    layout().setPanel(WindowLayout::Panel::File);
    QVERIFY(m_session.wait([&](const QImage &) { return frame().has_value(); }));
    QSet<int> seen;
    QVERIFY(m_session.wait([&](const QImage &) {
        seen.insert(frame().value_or(m_a));
        return seen.size() > 5;
    }));
    for (const int number : std::as_const(seen))
        QVERIFY2(number >= m_a && number <= m_b, qPrintable(QString::number(number)));
    m_session.keepPicture(u"file-playing"_s);
    m_session.key(u"space"_s);
    const int resting = rest(0.5);
    m_session.key(u"Right"_s);
    QVERIFY(m_session.wait([&](const QImage &) { return frame() == resting + 1; }));
}

void TestTakeSave::openedFileIsSavedAgainByteByByte()
{
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center(), true));
    QVERIFY(m_dialog.setName(u"shot"_s));
    m_dialog.keepPicture(u"save-dialog-file"_s);
    QVERIFY(m_dialog.save());
    QVERIFY(isComplete(2));
    m_session.keepPicture(u"saves-of-a-file"_s);
    const NativeFile first(path(u"shot.vesk"_s));
    const NativeFile second(path(u"shot (2).vesk"_s));
    QVERIFY(!first.records.isEmpty());
    QVERIFY(first.records == second.records);
    QCOMPARE(second.first(), m_a);
    QCOMPARE(second.last(), m_b);
}

void TestTakeSave::openedFileClosesFromItsMenu()
{
    m_session.click(layout().savesOpenButton(0).center());
    layout().setPanel(WindowLayout::Panel::File);
    QVERIFY(m_session.wait([&](const QImage &) { return frame().has_value(); }));
    QVERIFY(m_session.pickFromFileMenu(3));
    QVERIFY(m_session.wait([&](const QImage &) { return !frame(); }));
    m_session.keepPicture(u"file-closed"_s);
}

void TestTakeSave::filmsShowTheTrimmedFrames_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("codec");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("coded");
    QTest::addColumn<bool>("coloured");
    QTest::newRow("raw") << 1 << 0 << u"raw.avi"_s << u"rawvideo,bgr24"_s << true;
    QTest::newRow("gray") << 1 << 1 << u"gray.avi"_s << u"rawvideo,gray"_s << false;
    QTest::newRow("AV1") << 2 << 0 << u"av1.mp4"_s << u"av1,yuv420p"_s << true;
    QTest::newRow("AV1 of 10 bits") << 2 << 1 << u"deep.mp4"_s << u"av1,yuv420p10le"_s << true;
    QTest::newRow("H.264") << 2 << 2 << u"h264.mp4"_s << u"h264,yuv420p"_s << true;
}

/// What a program that is not ours says of a film, and shows of it.
void TestTakeSave::filmsShowTheTrimmedFrames()
{
    QFETCH(const QString, name);
    QFETCH(const int, codec);
    openTake();
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center()));
    QVERIFY(m_dialog.setName(QFileInfo(name).baseName()));
    QFETCH(const int, format);
    QVERIFY(m_dialog.setFormat(format));
    QVERIFY(m_dialog.setCodec(codec));
    m_dialog.keepPicture(u"save-dialog-"_s + name);
    QVERIFY(m_dialog.save());
    QVERIFY(isComplete(m_saves++));
    QTEST(run(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-show_entries"_s, u"stream=codec_name,pix_fmt"_s,
                             u"-of"_s, u"csv=p=0"_s, path(name)}),
          "coded");
    const QString pictures = path(name) + u"_%d.png"_s;
    const auto picture = [&](int number) { return path(name) + u"_%1.png"_s.arg(number - m_a); };
    QCOMPARE(
        run(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, path(name), u"-start_number"_s, u"0"_s, pictures}),
        QString());
    QCOMPARE(files(name + u"_*.png"_s).size(), m_b - m_a + 1);
    QFETCH(const bool, coloured);
    for (const int number : {m_a, (m_a + m_b) / 2, m_b}) {
        const QImage image(picture(number));
        QCOMPARE(image.size(), QSize(640, 480));
        const ShownPicture shown(image.convertToFormat(QImage::Format_RGB32), image.rect(), {});
        QCOMPARE(shown.frameNumber(), number);
        QCOMPARE(shown.barsInPlace(), coloured);
    }
    Screen::keep(QImage(picture(m_a)), name);
}

void TestTakeSave::windowClosesInMidSave()
{
    openTake();
    QVERIFY(m_session.camera.dripFrames(300, 300'000));
    QVERIFY(m_dialog.open(layout().widget(u"Save..."_s).center()));
    QVERIFY(m_dialog.setName(u"quit"_s));
    QVERIFY(m_dialog.setFormat(0));
    QVERIFY(m_dialog.save());
    QTRY_VERIFY(QFileInfo(path(u"quit.vesk"_s)).size() > 1'000'000);
    m_session.screen.close(*m_session.screen.window(u"VESK"_s));
    QCOMPARE(m_session.program().exitCode(3000), 0);
    // What had come is kept; those that were saved before are whole.
    const NativeFile file(path(u"quit.vesk"_s));
    QCOMPARE(file.first(), m_a);
    QVERIFY(file.records.size() > 0 && file.records.size() < file.count() * file.recordSize());
    QVERIFY(file.records == NativeFile(path(u"shot.vesk"_s)).records.first(file.records.size()));
}

QTEST_GUILESS_MAIN(TestTakeSave)
#include "tst_take_save.moc"
