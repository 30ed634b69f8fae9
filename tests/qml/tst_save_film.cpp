#include "app/vesk_app.h"
#include "save/save_job.h"
#include "sim/camera.h"
#include "take/take.h"
#include "tests/qml/save_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

static const QString Format = u"Format"_s;
static const QString Codec = u"Codec"_s;
static const QString Quality = u"Quality"_s;
static const QString FrameRate = u"Frame Rate"_s;
static const QString FileSize = u"Est. File Size"_s;

/** What the dialog for saving asks of a film: codec, rate and quality. */
class TestSaveFilm : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(m_view.end(), QStringList()); }

    void formatsAreInTheirOrder();
    void codecsOf_data();
    void codecsOf();
    void rowsOf_data();
    void rowsOf();
    void filmsAreEstimatedByTheirPixels();
    void ratesToPick();
    void typedRate_data();
    void typedRate();
    void rateIsLimitedWhileItIsTyped_data();
    void rateIsLimitedWhileItIsTyped();
    void arrowsMoveTheHandleTheirWay();
    void qualityEndsAtTheCodecsWorst_data();
    void qualityEndsAtTheCodecsWorst();
    void qualityComesBackWithItsCodec();
    void formatThatIsChosenAgainKeepsItsCodec();
    void storedChoice_data();
    void storedChoice();
    void filmIsSavedAsItWasChosen();
    void typedRateCountsWhenSaveIsPressed();

private:
    bool start(const QString &format = {}, const QString &codec = {});
    QStringList entries(const QString &box) const;
    bool has(const QString &name, QAccessible::Role role) const;
    /** The quality that the slider stands at. */
    int quality() const;
    QQuickItem *slider() const;

    SaveFixture m_view;
};

/** The dialog for the ten frames of take 1 between the markers. */
bool TestSaveFilm::start(const QString &format, const QString &codec)
{
    Take *take = m_view.startWithTake(1);
    if (!take)
        return false;
    take->pause();
    take->setAFr(-5);
    take->setBFr(4);
    return m_view.openSave() && (format.isEmpty() || m_view.pick(Format, format)) &&
           (codec.isEmpty() || m_view.pick(Codec, codec));
}

QStringList TestSaveFilm::entries(const QString &box) const
{
    QAccessibleInterface *found = ViewFixture::element(m_view.saveDialog(), box, QAccessible::ComboBox);
    return found ? found->object()->property("model").toStringList() : QStringList{u"no box"_s};
}

bool TestSaveFilm::has(const QString &name, QAccessible::Role role) const
{
    return ViewFixture::element(m_view.saveDialog(), name, role) != nullptr;
}

QQuickItem *TestSaveFilm::slider() const
{
    QAccessibleInterface *found = ViewFixture::element(m_view.saveDialog(), Quality, QAccessible::Slider);
    return found ? qobject_cast<QQuickItem *>(found->object()) : nullptr;
}

int TestSaveFilm::quality() const
{
    return slider() ? slider()->property("value").toInt() : -1;
}

void TestSaveFilm::formatsAreInTheirOrder()
{
    QVERIFY(start());
    QCOMPARE(entries(Format), QStringList({u"VESK"_s, u"AVI"_s, u"MP4"_s, u"TIFF"_s}));
}

void TestSaveFilm::codecsOf_data()
{
    QTest::addColumn<QStringList>("codecs");
    QTest::newRow("AVI") << QStringList{u"RAW - BGR24"_s, u"RAW - Gray8"_s};
    QTest::newRow("MP4") << QStringList{u"AV1 - YUV420P"_s, u"AV1 - YUV420P10"_s, u"H.264 - YUV420P"_s};
}

void TestSaveFilm::codecsOf()
{
    QFETCH(const QStringList, codecs);
    QVERIFY(start(QString::fromLatin1(QTest::currentDataTag())));
    QCOMPARE(entries(Codec), codecs);
    QCOMPARE(m_view.chosen(Codec), codecs.first());
    QVERIFY(m_view.isEnabled(Codec, QAccessible::ComboBox));
}

void TestSaveFilm::rowsOf_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<bool>("rate");
    QTest::addColumn<bool>("quality");
    QTest::addColumn<bool>("size");
    QTest::newRow("native") << u"VESK"_s << QString() << false << false << true;
    QTest::newRow("images") << u"TIFF"_s << QString() << false << false << true;
    QTest::newRow("raw") << u"AVI"_s << u"RAW - BGR24"_s << true << false << true;
    QTest::newRow("gray") << u"AVI"_s << u"RAW - Gray8"_s << true << false << true;
    QTest::newRow("AV1") << u"MP4"_s << u"AV1 - YUV420P"_s << true << true << false;
    QTest::newRow("AV1 of 10 bits") << u"MP4"_s << u"AV1 - YUV420P10"_s << true << true << false;
    QTest::newRow("H.264") << u"MP4"_s << u"H.264 - YUV420P"_s << true << true << false;
}

void TestSaveFilm::rowsOf()
{
    QFETCH(const QString, format);
    QFETCH(const QString, codec);
    QVERIFY(start(format, codec));
    QTEST(has(FrameRate, QAccessible::ComboBox), "rate");
    QTEST(has(Quality, QAccessible::Slider), "quality");
    QTEST(has(FileSize, QAccessible::StaticText), "size");
}

void TestSaveFilm::filmsAreEstimatedByTheirPixels()
{
    const auto size = [](qint64 bytes) {
        return QLocale().formattedDataSize(bytes, 2, QLocale::DataSizeSIFormat);
    };
    QVERIFY(start(u"AVI"_s));
    QCOMPARE(m_view.textOf(FileSize), size(307'200 * 3 * 10));
    QVERIFY(m_view.pick(Codec, u"RAW - Gray8"_s));
    QCOMPARE(m_view.textOf(FileSize), size(307'200 * 10));
}

void TestSaveFilm::ratesToPick()
{
    QVERIFY(start(u"AVI"_s));
    const QStringList rates{u"1"_s,  u"23.98"_s, u"24"_s, u"25"_s,  u"29.97"_s, u"30"_s,
                            u"50"_s, u"59.94"_s, u"60"_s, u"120"_s, u"240"_s};
    QCOMPARE(entries(FrameRate), rates);
    QCOMPARE(m_view.typed(FrameRate), u"30"_s);
    QAccessibleInterface *box = ViewFixture::element(m_view.saveDialog(), FrameRate, QAccessible::ComboBox);
    auto *item = qobject_cast<QQuickItem *>(box->object());
    // The arrow at the end of the box.
    const QPointF arrow = item->mapToScene({item->width() - 8, item->height() / 2});
    QTest::mouseClick(m_view.saveDialog(), Qt::LeftButton, {}, arrow.toPoint());
    QAccessibleInterface *entry = nullptr;
    QTRY_VERIFY((entry = ViewFixture::element(m_view.saveDialog(), u"59.94 fps"_s, QAccessible::MenuItem)));
    QVERIFY(ViewFixture::click(m_view.saveDialog(), entry));
    QTRY_COMPARE(m_view.typed(FrameRate), u"59.94"_s);
}

void TestSaveFilm::typedRate_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    QTest::newRow("listed") << u"25"_s << u"25"_s;
    QTest::newRow("not listed") << u"23.976"_s << u"23.976"_s;
    QTest::newRow("a fourth decimal") << u"12.3456"_s << u"12.345"_s;
    QTest::newRow("letters") << u"4x8"_s << u"48"_s;
    QTest::newRow("power") << u"1e2"_s << u"12"_s;
    QTest::newRow("nothing") << u""_s << u"30"_s;
    QTest::newRow("above all") << u"241"_s << u"240"_s;
    QTest::newRow("below all") << u"0"_s << u"1"_s;
    QTest::newRow("only a dot") << u"."_s << u"24"_s;
}

void TestSaveFilm::typedRate()
{
    QFETCH(const QString, typed);
    VeskApp::instance()->setSetting(u"save/fr_rate"_s, 24);
    QVERIFY(start(u"MP4"_s));
    QCOMPARE(m_view.typed(FrameRate), u"24"_s);
    QVERIFY(m_view.typeInto(FrameRate, typed, Qt::Key_Return));
    QTEST(m_view.typed(FrameRate), "shown");
}

void TestSaveFilm::rateIsLimitedWhileItIsTyped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    QTest::newRow("highest") << u"240"_s << u"240"_s;
    QTest::newRow("a little more") << u"240.5"_s << u"240"_s;
    QTest::newRow("more") << u"999"_s << u"240"_s;
    QTest::newRow("less") << u"0"_s << u"1"_s;
}

void TestSaveFilm::rateIsLimitedWhileItIsTyped()
{
    QFETCH(const QString, typed);
    QVERIFY(start(u"AVI"_s));
    QVERIFY(m_view.typeInto(FrameRate, typed, Qt::Key_unknown));
    QTEST(m_view.typed(FrameRate), "shown");
}

void TestSaveFilm::arrowsMoveTheHandleTheirWay()
{
    QVERIFY(start(u"MP4"_s));
    QCOMPARE(quality(), 15);
    slider()->forceActiveFocus(Qt::TabFocusReason);
    const auto place = [this] { return slider()->property("visualPosition").toDouble(); };
    const double before = place();
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Left);
    QCOMPARE(quality(), 16);
    QVERIFY(place() < before);
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Right);
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Right);
    QCOMPARE(quality(), 14);
    QVERIFY(place() > before);
}

void TestSaveFilm::qualityEndsAtTheCodecsWorst_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<int>("worst");
    QTest::newRow("AV1") << u"AV1 - YUV420P"_s << 63;
    QTest::newRow("AV1 of 10 bits") << u"AV1 - YUV420P10"_s << 63;
    QTest::newRow("H.264") << u"H.264 - YUV420P"_s << 51;
}

void TestSaveFilm::qualityEndsAtTheCodecsWorst()
{
    QFETCH(const int, worst);
    QFETCH(const QString, codec);
    QVERIFY(start(u"MP4"_s, codec));
    slider()->forceActiveFocus(Qt::TabFocusReason);
    for (int i = 0; i < 70; ++i)
        QTest::keyClick(m_view.saveDialog(), Qt::Key_Left);
    QCOMPARE(quality(), worst);
    QCOMPARE(slider()->property("visualPosition").toDouble(), 0.0);
    for (int i = 0; i < 70; ++i)
        QTest::keyClick(m_view.saveDialog(), Qt::Key_Right);
    QCOMPARE(quality(), 1);
    QCOMPARE(slider()->property("visualPosition").toDouble(), 1.0);
}

void TestSaveFilm::qualityComesBackWithItsCodec()
{
    VeskApp::instance()->setSetting(u"save/quality"_s, 60);
    QVERIFY(start(u"MP4"_s));
    QCOMPARE(quality(), 60);
    QVERIFY(m_view.pick(Codec, u"H.264 - YUV420P"_s));
    QCOMPARE(quality(), 51);
    QVERIFY(m_view.pick(Codec, u"AV1 - YUV420P10"_s));
    QCOMPARE(quality(), 60);
}

void TestSaveFilm::formatThatIsChosenAgainKeepsItsCodec()
{
    QVERIFY(start(u"MP4"_s, u"H.264 - YUV420P"_s));
    QAccessibleInterface *box = ViewFixture::element(m_view.saveDialog(), Format, QAccessible::ComboBox);
    QVERIFY(ViewFixture::click(m_view.saveDialog(), box));
    QAccessibleInterface *entry = nullptr;
    QTRY_VERIFY((entry = ViewFixture::element(m_view.saveDialog(), u"MP4"_s, QAccessible::MenuItem)));
    QVERIFY(ViewFixture::click(m_view.saveDialog(), entry));
    QTRY_VERIFY(!has(u"MP4"_s, QAccessible::MenuItem));
    QCOMPARE(m_view.chosen(Codec), u"H.264 - YUV420P"_s);
}

void TestSaveFilm::storedChoice_data()
{
    QTest::addColumn<int>("codec");
    QTest::addColumn<QVariant>("rate");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QString>("shownCodec");
    QTest::addColumn<QString>("shownRate");
    QTest::addColumn<int>("shownQuality");
    QTest::newRow("as it was") << 5 << QVariant(29.97) << QVariant(40) << u"AV1 - YUV420P10"_s << u"29.97"_s
                               << 40;
    QTest::newRow("too bad for H.264")
        << 6 << QVariant(30) << QVariant(60) << u"H.264 - YUV420P"_s << u"30"_s << 51;
    QTest::newRow("too bad for AV1") << 4 << QVariant(30) << QVariant(64) << u"AV1 - YUV420P"_s << u"30"_s
                                     << 63;
    QTest::newRow("too good") << 6 << QVariant(30) << QVariant(0) << u"H.264 - YUV420P"_s << u"30"_s << 1;
    QTest::newRow("codec of another format")
        << 1 << QVariant(500) << QVariant(15) << u"AV1 - YUV420P"_s << u"240"_s << 15;
    QTest::newRow("nothing") << 6 << QVariant(u""_s) << QVariant(u""_s) << u"H.264 - YUV420P"_s << u"30"_s
                             << 15;
    QTest::newRow("no numbers") << 99 << QVariant(u"fast"_s) << QVariant(u"good"_s) << u"AV1 - YUV420P"_s
                                << u"30"_s << 15;
}

void TestSaveFilm::storedChoice()
{
    QFETCH(const int, codec);
    QFETCH(const QVariant, rate);
    QFETCH(const QVariant, stored);
    VeskApp *app = VeskApp::instance();
    app->setSetting(u"save/format"_s, 2);
    app->setSetting(u"save/codec"_s, codec);
    app->setSetting(u"save/fr_rate"_s, rate);
    app->setSetting(u"save/quality"_s, stored);
    QVERIFY(start());
    QCOMPARE(m_view.chosen(Format), u"MP4"_s);
    QTEST(m_view.chosen(Codec), "shownCodec");
    QTEST(m_view.typed(FrameRate), "shownRate");
    QTEST(quality(), "shownQuality");
}

void TestSaveFilm::filmIsSavedAsItWasChosen()
{
    QVERIFY(start(u"MP4"_s, u"H.264 - YUV420P"_s));
    slider()->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_view.saveDialog(), Qt::Key_Left);
    QVERIFY(m_view.typeInto(FrameRate, u"29.97"_s));
    QVERIFY(m_view.typeInto(u"File Name"_s, u"film"_s));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    SaveJob *job = SaveFixture::jobs().first();
    QCOMPARE(job->format(), Util::FormatMp4);
    QCOMPARE(job->codec(), Util::CodecH264);
    QCOMPARE(job->frameRate(), 29.97);
    QCOMPARE(job->quality(), 16);
    const VeskApp &app = *VeskApp::instance();
    QCOMPARE(app.setting(u"save/format"_s).toInt(), 2);
    QCOMPARE(app.setting(u"save/codec"_s).toInt(), 6);
    QCOMPARE(app.setting(u"save/fr_rate"_s).toDouble(), 29.97);
    QCOMPARE(app.setting(u"save/quality"_s).toInt(), 16);
    QTRY_COMPARE_WITH_TIMEOUT(m_view.cell(u"film.mp4"_s, u"Status"_s), u"Complete"_s, 20'000);
    QCOMPARE(m_view.files(), QStringList(u"film.mp4"_s));
}

void TestSaveFilm::typedRateCountsWhenSaveIsPressed()
{
    QVERIFY(start(u"AVI"_s));
    QVERIFY(m_view.typeInto(FrameRate, u"48"_s, Qt::Key_unknown));
    QVERIFY(m_view.press(u"Save"_s));
    QTRY_COMPARE(SaveFixture::jobs().size(), 1);
    QCOMPARE(SaveFixture::jobs().first()->frameRate(), 48.0);
}

VIEW_TEST_MAIN(TestSaveFilm)
#include "tst_save_film.moc"
