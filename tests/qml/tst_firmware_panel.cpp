#include "camera/camera.h"
#include "sim/camera.h"
#include "tests/qml/view_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

static const QString Firmware = u"Firmware"_s;
static const QString Title = u"Firmware Update"_s;

/** The video format, the firmware's version and its update. */
class TestFirmwarePanel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void pickedVideoFormatIsTakenByTheCamera();
    void videoFormatIsOfferedWithMoreThanOne_data();
    void videoFormatIsOfferedWithMoreThanOne();
    void versionIsTextOrNumber();
    void updateIsHiddenWithoutTheFeature();
    void dialogStartsEmpty();
    void pickedFileIsSentOnce();
    void refusalIsTold();
    void closedDialogLeavesTheUploadGoing();
    void fileDialogHasRoomOfItsOwn();

private:
    QQuickWindow *openDialog();
    QString rowIn(QQuickWindow *dialog, const QString &label) const;
    QString file(const QString &name, const QByteArray &content);
    bool pickFile(QQuickWindow *dialog, const QString &path);

    ViewFixture m_view;
    QTemporaryDir m_folder;
};

void TestFirmwarePanel::initTestCase()
{
    QVERIFY(m_folder.isValid());
}

void TestFirmwarePanel::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

QQuickWindow *TestFirmwarePanel::openDialog()
{
    if (!m_view.clickIn(Firmware, u"Firmware Update"_s) ||
        !QTest::qWaitFor([this] { return m_view.dialog(Title) != nullptr; }))
        return nullptr;
    QQuickWindow *dialog = m_view.dialog(Title);
    return QTest::qWaitForWindowActive(dialog) ? dialog : nullptr;
}

QString TestFirmwarePanel::rowIn(QQuickWindow *dialog, const QString &label) const
{
    QAccessibleInterface *row = ViewFixture::element(dialog, label, QAccessible::StaticText);
    return row ? row->text(QAccessible::Description) : u"no row "_s + label;
}

QString TestFirmwarePanel::file(const QString &name, const QByteArray &content)
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName()
                                                                                    : QString();
}

static QObject *fileDialogOf(QQuickWindow *dialog)
{
    const QObjectList children = dialog->findChildren<QObject *>();
    for (QObject *child : children) {
        if (child->inherits("QQuickFileDialog"))
            return child;
    }
    return nullptr;
}

/** Picks a file of the test's folder by hand. */
bool TestFirmwarePanel::pickFile(QQuickWindow *dialog, const QString &path)
{
    QObject *files = fileDialogOf(dialog);
    if (!files || !files->setProperty("currentFolder", QUrl::fromLocalFile(m_folder.path())) ||
        !ViewFixture::click(dialog, u"Open Q4FW File"_s))
        return false;
    return m_view.clickInDrawn(QFileInfo(path).fileName(), dialog) &&
           m_view.clickInDrawn(u"Open"_s, dialog) &&
           QTest::qWaitFor([&] { return m_view.drawnDialog(dialog) == nullptr; });
}

void TestFirmwarePanel::pickedVideoFormatIsTakenByTheCamera()
{
    q4sim::Camera *simulated = m_view.startWithCamera();
    QVERIFY(simulated);
    QTRY_COMPARE(m_view.choice(u"Video"_s, u"Format"_s), u"1920x1080p30"_s);
    auto *box = m_view.inSection(u"Video"_s, u"Format"_s, QAccessible::ComboBox)->object();
    QCOMPARE(box->property("font").value<QFont>().pixelSize(), 11);
    QVERIFY(m_view.choose(u"Video"_s, u"Format"_s, u"1280x720p59.94"_s));
    QTRY_COMPARE(ViewFixture::bodies(*simulated, "PUT", u"/video/format"_s),
                 QByteArrayList{"\"1280x720p59.94\""});
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(m_view.choice(u"Video"_s, u"Format"_s), u"1280x720p59.94"_s);
}

void TestFirmwarePanel::videoFormatIsOfferedWithMoreThanOne_data()
{
    QTest::addColumn<QStringList>("formats");
    QTest::addColumn<bool>("told");
    QTest::addColumn<bool>("offered");
    QTest::newRow("one") << QStringList{u"1280x720p30"_s} << true << false;
    QTest::newRow("two") << QStringList{u"1280x720p30"_s, u"1280x720p60"_s} << true << true;
    QTest::newRow("not told") << QStringList{u"1280x720p30"_s} << false << true;
}

void TestFirmwarePanel::videoFormatIsOfferedWithMoreThanOne()
{
    QFETCH(const QStringList, formats);
    QFETCH(const bool, told);
    QFETCH(const bool, offered);
    q4sim::Config config;
    config.videoFormats = formats;
    config.tellsVideoFormats = told;
    QVERIFY(m_view.startWithCamera(config));
    QTRY_COMPARE(m_view.choice(u"Video"_s, u"Format"_s), u"1280x720p30"_s);
    QCOMPARE(!m_view.inSection(u"Video"_s, u"Format"_s, QAccessible::ComboBox)->state().disabled, offered);
}

void TestFirmwarePanel::versionIsTextOrNumber()
{
    q4sim::Config config;
    QVERIFY(m_view.startUnfolded(config));
    QTRY_COMPARE(m_view.rowText(Firmware, u"Version"_s), u"3.2.1"_s);
    m_view.close();
    config.firmware = q4sim::Firmware::Old;
    QVERIFY(m_view.startUnfolded(config));
    QTRY_COMPARE(m_view.rowText(Firmware, u"Version"_s), u"117"_s);
}

void TestFirmwarePanel::updateIsHiddenWithoutTheFeature()
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    QVERIFY(simulated);
    QTRY_VERIFY(m_view.inSection(Firmware, u"Firmware Update"_s));
    simulated->forceValue(u"features/q4fw"_s, 0);
    QTRY_VERIFY(!m_view.inSection(Firmware, u"Firmware Update"_s));
    QVERIFY(m_view.inSection(Firmware, u"Version"_s));
}

void TestFirmwarePanel::dialogStartsEmpty()
{
    QVERIFY(m_view.startUnfolded());
    QQuickWindow *dialog = openDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(480, 160));
    QCOMPARE(dialog->minimumSize(), QSize(480, 160));
    QCOMPARE(dialog->maximumSize(), QSize(480, 160));
    QCOMPARE(dialog->modality(), Qt::ApplicationModal);
    QVERIFY(ViewFixture::element(dialog, u"Q4FW File:"_s));
    QVERIFY(ViewFixture::element(dialog, u"Status:"_s));
    QCOMPARE(rowIn(dialog, u"Camera"_s), u"Simulated Q4"_s);
    QCOMPARE(rowIn(dialog, u"Q4FW File"_s), QString());
    QCOMPARE(rowIn(dialog, u"Status"_s), QString());
    QVERIFY(ViewFixture::element(dialog, u"Start Update"_s)->state().disabled);
    QVERIFY(ViewFixture::click(dialog, u"Close"_s));
    QTRY_VERIFY(!m_view.dialog(Title));
}

void TestFirmwarePanel::pickedFileIsSentOnce()
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    QVERIFY(simulated);
    const QString path = file(u"new.q4fw"_s, QByteArray(300000, 'q'));
    QQuickWindow *dialog = openDialog();
    QVERIFY(dialog);
    QVERIFY(pickFile(dialog, path));
    QTRY_COMPARE(rowIn(dialog, u"Q4FW File"_s), path);
    QAccessibleInterface *start = ViewFixture::element(dialog, u"Start Update"_s);
    QVERIFY(!start->state().disabled);
    QVERIFY(ViewFixture::click(dialog, start));
    QVERIFY(start->state().disabled);
    QVERIFY(ViewFixture::click(dialog, start));
    start->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(rowIn(dialog, u"Status"_s), u"Finalizing firmware update...Do NOT power off camera!"_s);
    // Nor after the upload has ended.
    QVERIFY(start->state().disabled);
    QVERIFY(ViewFixture::click(dialog, start));
    QVERIFY(m_view.waitForPolls(2));
    QCOMPARE(simulated->requests("POST", u"/q4fw"_s).size(), 1);
    QCOMPARE(simulated->upload()["file_name"].toString(), u"new.q4fw"_s);
    QCOMPARE(simulated->upload()["size"].toInt(), 300000);
}

void TestFirmwarePanel::refusalIsTold()
{
    q4sim::Config config;
    config.rejectedFirmware = "BAD";
    QVERIFY(m_view.startUnfolded(config));
    QQuickWindow *dialog = openDialog();
    QVERIFY(dialog);
    QVERIFY(pickFile(dialog, file(u"bad.q4fw"_s, "BAD firmware")));
    QVERIFY(ViewFixture::click(dialog, u"Start Update"_s));
    QTRY_COMPARE(rowIn(dialog, u"Status"_s), u"Update error: 4"_s);
}

void TestFirmwarePanel::closedDialogLeavesTheUploadGoing()
{
    q4sim::Camera *simulated = m_view.startUnfolded();
    QVERIFY(simulated);
    simulated->setFault(q4sim::Route::Q4fw, {.kind = q4sim::FaultKind::SlowUpload, .ms = 20, .bytes = 65536});
    QQuickWindow *dialog = openDialog();
    QVERIFY(dialog);
    QVERIFY(pickFile(dialog, file(u"slow.q4fw"_s, QByteArray(6 << 20, 's'))));
    QVERIFY(ViewFixture::click(dialog, u"Start Update"_s));
    QTRY_VERIFY(rowIn(dialog, u"Status"_s).startsWith("Uploading Q4FW file..."_L1));
    QVERIFY(ViewFixture::click(dialog, u"Close"_s));
    QTRY_VERIFY(!m_view.dialog(Title));
    QVERIFY(!simulated->upload()["complete"].toBool());
    // Opened again meanwhile, it tells of the same upload and starts no other.
    dialog = openDialog();
    QVERIFY(dialog);
    QVERIFY(rowIn(dialog, u"Status"_s).startsWith("Uploading Q4FW file..."_L1));
    QVERIFY(pickFile(dialog, m_folder.filePath(u"slow.q4fw"_s)));
    QVERIFY(ViewFixture::element(dialog, u"Start Update"_s)->state().disabled);
    QTRY_VERIFY_WITH_TIMEOUT(simulated->upload()["complete"].toBool(), 10000);
    QCOMPARE(simulated->upload()["size"].toInt(), 6 << 20);
    QTRY_COMPARE(rowIn(dialog, u"Status"_s), u"Finalizing firmware update...Do NOT power off camera!"_s);
}

/** Where no desktop offers a dialog for files, the drawn one has a window of its own and is not cut. */
void TestFirmwarePanel::fileDialogHasRoomOfItsOwn()
{
    QVERIFY(m_view.startUnfolded());
    QQuickWindow *dialog = openDialog();
    QVERIFY(dialog);
    QObject *files = fileDialogOf(dialog);
    QVERIFY(files);
    QCOMPARE(files->property("title").toString(), u"Open Q4FW File"_s);
    QCOMPARE(files->property("nameFilters").toStringList(), QStringList{u"Q4FW files (*.q4fw)"_s});
    QVERIFY(ViewFixture::click(dialog, u"Open Q4FW File"_s));
    QTRY_VERIFY(files->property("visible").toBool());
    QTRY_VERIFY(m_view.drawnDialog(dialog));
    QVERIFY(m_view.drawnDialog(dialog)->width() > 480);
    QVERIFY(m_view.drawnDialog(dialog)->height() > 160);
    QVERIFY(m_view.clickInDrawn(u"Cancel"_s, dialog));
    QTRY_VERIFY(!files->property("visible").toBool());
    QCOMPARE(rowIn(dialog, u"Q4FW File"_s), QString());
}

VIEW_TEST_MAIN(TestFirmwarePanel)
#include "tst_firmware_panel.moc"
