#include "image/img_search.h"
#include "tests/qml/playback_fixture.h"
#include "tests/qml/view_test_main.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** The control bar of a recorded source. */
class TestPlaybackSections : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void sectionsStandInOrder();
    void colorSectionNeedsAColourFilter();
    void panesAreKeptForAllSourcesTogether();
    void panesStartUnfoldedButForColour();
    void recordingIsDescribed_data();
    void recordingIsDescribed();
    void cameraIsDescribed();
    void cutNameHasATooltip();
    void lensIsDescribed();
    void lensRowsShowWhenTheyTellSomething_data();
    void lensRowsShowWhenTheyTellSomething();
    void focusAtInfinityIsAGlyph();
    void searchSettingsAreWritten();
    void searchSettingsFollowTheSearch();
    void typedSearchSettingsAreLimited();
    void searchSettingsAreDisabledDuringASearch();
    void adjustmentShowsInAPausedPicture();
    void barScrollsHalfAViewBeyondItsEnd();
    void pictureFillsTheRest();
    void vanishedSourceLeavesNoMessage();
    void vanishedSourceTakesNoInput();

private:
    PlaybackFixture m_view;
};

void TestPlaybackSections::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

void TestPlaybackSections::sectionsStandInOrder()
{
    QVERIFY(m_view.startUnread({{"camera", QJsonObject{{"cfa", 1}}}}));
    ViewFixture::settle(m_view.window());
    double bottom = 0;
    for (const QString &label : {u"Take"_s, u"Camera"_s, u"Image Tools"_s, u"Image Adjustments"_s,
                                 u"Color Adjustments"_s, u"Image Search"_s, u"Lens Info"_s}) {
        QQuickItem *header = m_view.item(label, QAccessible::CheckBox);
        if (!header)
            header = m_view.item(label, QAccessible::Button);
        QVERIFY2(header, qPrintable(label));
        // The spacing of sections, and the frame of a section around its header.
        QVERIFY(header->mapToScene({0, 0}).y() >= bottom + 4);
        QCOMPARE(header->width(), 120.0 + 140.0 + 8.0 - 4.0);
        bottom = header->mapToScene({0, header->height()}).y();
    }
}

void TestPlaybackSections::colorSectionNeedsAColourFilter()
{
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    QVERIFY(m_view.shows(u"Image Search"_s));
    QVERIFY(!m_view.shows(u"Color Adjustments"_s));
    source->updateValues({{"camera", QJsonObject{{"cfa", 3}}}});
    QVERIFY(m_view.shows(u"Color Adjustments"_s));
}

void TestPlaybackSections::panesAreKeptForAllSourcesTogether()
{
    const QJsonObject colour = {{"camera", QJsonObject{{"cfa", 1}}}};
    const auto kept = [](const char *name) {
        return VeskApp::instance()->setting(u"playback/%1_pane_expanded"_s.arg(QLatin1StringView(name)));
    };
    QVERIFY(m_view.startUnread(colour));
    QVERIFY(m_view.click(u"Camera"_s));
    QVERIFY(m_view.click(u"Color Adjustments"_s));
    QVERIFY(!m_view.shows(u"Serial"_s));
    m_view.close();
    for (const char *name : {"main", "img_tools", "img_adj", "color_adj", "img_search", "lens"})
        QCOMPARE(kept(name), true);
    QCOMPARE(kept("camera"), false);
    QVERIFY(m_view.startUnread(colour));
    QVERIFY(!m_view.shows(u"Serial"_s));
    QVERIFY(m_view.shows(u"White Balance"_s) || m_view.shows(u"Auto White Balance"_s));
    for (const QString &label : {u"Take"_s, u"Camera"_s, u"Image Tools"_s, u"Image Adjustments"_s,
                                 u"Color Adjustments"_s, u"Image Search"_s, u"Lens Info"_s})
        QVERIFY(m_view.click(label));
    m_view.close();
    for (const char *name : {"main", "img_tools", "img_adj", "color_adj", "img_search", "lens"})
        QCOMPARE(kept(name), false);
    QCOMPARE(kept("camera"), true);
}

void TestPlaybackSections::panesStartUnfoldedButForColour()
{
    QVERIFY(m_view.startUnread({{"camera", QJsonObject{{"cfa", 1}}}}));
    for (const QString &row :
         {u"Resolution"_s, u"Serial"_s, u"Focus Peaking"_s, u"Gamma"_s, u"Reference Frame"_s, u"Mount"_s})
        QVERIFY2(m_view.shows(row), qPrintable(row));
    QVERIFY(!m_view.shows(u"Auto White Balance"_s));
}

void TestPlaybackSections::recordingIsDescribed_data()
{
    QTest::addColumn<int>("sync");
    QTest::addColumn<QString>("syncText");
    QTest::newRow("internal") << 0 << u"Internal"_s;
    QTest::newRow("external") << 1 << u"External"_s;
    QTest::newRow("another") << 2 << u"External"_s;
}

void TestPlaybackSections::recordingIsDescribed()
{
    QFETCH(const int, sync);
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    source->updateValues(
        {{"acq",
          QJsonObject{
              {"res", "1280 x 720"}, {"fr_rate", 1000.6}, {"exp_time", 123456.789}, {"fsync_mode", sync}}}});
    QCOMPARE(m_view.rowText(u"Take"_s, u"Resolution"_s), u"1280 x 720"_s);
    QCOMPARE(m_view.rowText(u"Take"_s, u"Frame Rate"_s), u"1001 fps"_s);
    QCOMPARE(m_view.rowText(u"Take"_s, u"Exposure Time"_s), u"123456.79 µs"_s);
    QTEST(m_view.rowText(u"Take"_s, u"Frame Sync Mode"_s), "syncText");
}

void TestPlaybackSections::cameraIsDescribed()
{
    QVERIFY(m_view.startUnread(
        {{"camera",
          QJsonObject{
              {"name", "Bench 3"}, {"serial", "Q4-00077"}, {"model", "Q4-C"}, {"fw_ver", "1.2.3"}}}}));
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Name"_s), u"Bench 3"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Serial"_s), u"Q4-00077"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Model"_s), u"Q4-C"_s);
    QCOMPARE(m_view.rowText(u"Camera"_s, u"Firmware Version"_s), u"1.2.3"_s);
}

void TestPlaybackSections::cutNameHasATooltip()
{
    const QString name = u"The camera at the far end of the long hall"_s;
    QVERIFY(m_view.startUnread({{"camera", QJsonObject{{"name", name}, {"serial", "1"}}}}));
    const auto pointAt = [this](const QString &label) {
        ViewFixture::settle(m_view.window());
        QTest::mouseMove(m_view.window(),
                         ViewFixture::centre(m_view.window(), m_view.inSection(u"Camera"_s, label)));
    };
    pointAt(u"Name"_s);
    QTRY_VERIFY(m_view.showsTooltip(name));
    pointAt(u"Serial"_s);
    QTRY_VERIFY(!m_view.showsTooltip(name));
}

void TestPlaybackSections::lensIsDescribed()
{
    QVERIFY(m_view.startUnread({{"lens", QJsonObject{{"mount", "Canon EF"},
                                                     {"name", "EF 24-70"},
                                                     {"focal_len", 35},
                                                     {"focus_dist", 2.5},
                                                     {"fstop", 2.7999999523162842}}}}));
    const auto row = [this](const QString &label) { return m_view.rowText(u"Lens Info"_s, label); };
    QCOMPARE(row(u"Mount"_s), u"Canon EF"_s);
    QCOMPARE(row(u"Name"_s), u"EF 24-70"_s);
    QCOMPARE(row(u"Focal Length"_s), u"35 mm"_s);
    QCOMPARE(row(u"Focus Distance"_s), u"2.5 m"_s);
    QCOMPARE(row(u"F-stop"_s), u"f/2.8"_s);
}

void TestPlaybackSections::lensRowsShowWhenTheyTellSomething_data()
{
    QTest::addColumn<QJsonObject>("lens");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("nothing known") << QJsonObject() << QStringList{u"Mount"_s};
    QTest::newRow("passive") << QJsonObject{{"mount", "Passive"}, {"name", "x"}} << QStringList{u"Mount"_s};
    QTest::newRow("active") << QJsonObject{{"mount", "EF"}} << QStringList{u"Mount"_s, u"Name"_s};
    QTest::newRow("length") << QJsonObject{{"focal_len", 50}} << QStringList{u"Mount"_s, u"Focal Length"_s};
    QTest::newRow("distance") << QJsonObject{{"focus_dist", 0.4}}
                              << QStringList{u"Mount"_s, u"Focus Distance"_s};
    QTest::newRow("stop") << QJsonObject{{"fstop", 8}} << QStringList{u"Mount"_s, u"F-stop"_s};
}

void TestPlaybackSections::lensRowsShowWhenTheyTellSomething()
{
    QFETCH(const QJsonObject, lens);
    QFETCH(const QStringList, rows);
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    source->updateValues({{"lens", lens}});
    QStringList shown;
    for (const QString &label :
         {u"Mount"_s, u"Name"_s, u"Focal Length"_s, u"Focus Distance"_s, u"F-stop"_s}) {
        if (m_view.inSection(u"Lens Info"_s, label))
            shown.append(label);
    }
    QCOMPARE(shown, rows);
}

void TestPlaybackSections::focusAtInfinityIsAGlyph()
{
    PlaybackSource *source = m_view.startUnread({{"lens", QJsonObject{{"focus_dist", 65535}}}});
    QVERIFY(source);
    QQuickItem *glyph = m_view.itemWithText(u"\uF3B8"_s);
    QVERIFY(glyph);
    QCOMPARE(glyph->property("font").value<QFont>().family(), u"remixicon"_s);
    source->updateValues({{"lens", QJsonObject{{"focus_dist", 65534}}}});
    QCOMPARE(glyph->property("text"), u"65534 m"_s);
    QCOMPARE(glyph->property("font").value<QFont>().family(), u"Inter"_s);
}

void TestPlaybackSections::searchSettingsAreWritten()
{
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    const ImgSearch *search = source->imgSearch();
    QCOMPARE(m_view.choice(u"Image Search"_s, u"Reference Frame"_s), u"Previous Frame"_s);
    QVERIFY(m_view.choose(u"Image Search"_s, u"Reference Frame"_s, u"Start Frame"_s));
    QTRY_COMPARE(search->refFrame(), ImgSearch::StartFrame);
    QCOMPARE(m_view.choice(u"Image Search"_s, u"Reference Frame"_s), u"Start Frame"_s);
    QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Frame Step"_s), u"100"_s);
    QVERIFY(m_view.type(u"Image Search"_s, u"Frame Step"_s, u"2147483647"_s));
    QCOMPARE(search->step(), 2'147'483'647);
    QVERIFY(m_view.clickArrow(u"Image Search"_s, u"Frame Step"_s, false));
    QCOMPARE(search->step(), 2'147'483'646);
    QVERIFY(m_view.clickArrow(u"Image Search"_s, u"Frame Step"_s, true));
    QCOMPARE(search->step(), 2'147'483'647);
    QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Threshold"_s), u"0.50"_s);
    QVERIFY(m_view.type(u"Image Search"_s, u"Threshold"_s, u"0.25"_s));
    QCOMPARE(search->threshold(), 0.25);
    QVERIFY(m_view.drag(u"Image Search"_s, u"Threshold"_s, 0.25, 1.0, 30));
    QCOMPARE(search->threshold(), 0.99);
    QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Threshold"_s), u"0.99"_s);
    QVERIFY(m_view.drag(u"Image Search"_s, u"Threshold"_s, 1.0, 0.0, 30));
    QCOMPARE(search->threshold(), 0.01);
}

void TestPlaybackSections::searchSettingsFollowTheSearch()
{
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    source->imgSearch()->setRefFrame(ImgSearch::StartFrame);
    source->imgSearch()->setStep(7);
    source->imgSearch()->setThreshold(0.125);
    QCOMPARE(m_view.choice(u"Image Search"_s, u"Reference Frame"_s), u"Start Frame"_s);
    QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Frame Step"_s), u"7"_s);
    QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Threshold"_s), u"0.13"_s);
    QCOMPARE(
        m_view.inSection(u"Image Search"_s, u"Threshold"_s, QAccessible::Slider)->object()->property("value"),
        0.125);
    // Shown rounded, but not written back.
    QCOMPARE(source->imgSearch()->threshold(), 0.125);
}

void TestPlaybackSections::typedSearchSettingsAreLimited()
{
    PlaybackSource *source = m_view.startUnread();
    QVERIFY(source);
    QVERIFY(m_view.type(u"Image Search"_s, u"Frame Step"_s, u"0"_s));
    QCOMPARE(source->imgSearch()->step(), 1);
    QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Frame Step"_s), u"1"_s);
    for (const QString &text : {u"1.5"_s, u"0"_s, QString()}) {
        QVERIFY(m_view.type(u"Image Search"_s, u"Threshold"_s, text));
        QCOMPARE(source->imgSearch()->threshold(), 0.5);
        QCOMPARE(m_view.fieldText(u"Image Search"_s, u"Threshold"_s), u"0.50"_s);
    }
    QVERIFY(m_view.type(u"Image Search"_s, u"Threshold"_s, u"0.99"_s));
    QCOMPARE(source->imgSearch()->threshold(), 0.99);
}

void TestPlaybackSections::searchSettingsAreDisabledDuringASearch()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    const auto enabledRows = [this] {
        int enabled = 0;
        for (const auto &[name, role] : {std::pair(u"Reference Frame"_s, QAccessible::ComboBox),
                                         std::pair(u"Frame Step"_s, QAccessible::SpinBox),
                                         std::pair(u"Threshold"_s, QAccessible::Slider),
                                         std::pair(u"Threshold"_s, QAccessible::EditableText)}) {
            if (auto *item = m_view.item(name, role); item && item->isEnabled())
                ++enabled;
        }
        return enabled;
    };
    QCOMPARE(enabledRows(), 4);
    source->answersAtOnce = false;
    source->imgSearch()->start(true);
    QCOMPARE(enabledRows(), 0);
    source->imgSearch()->cancel();
    QCOMPARE(enabledRows(), 4);
}

void TestPlaybackSections::adjustmentShowsInAPausedPicture()
{
    PlaybackSource *source = m_view.startPaused(0, 1000);
    QVERIFY(source);
    source->setFr(5);
    source->asked.clear();
    QVERIFY(m_view.type(u"Image Adjustments"_s, u"Gain"_s, u"2"_s));
    QCOMPARE(source->imgAdjModel()->gain()->variant(), 2.0);
    QVERIFY(!source->asked.isEmpty());
    QCOMPARE(source->asked.last(), 5);
}

void TestPlaybackSections::barScrollsHalfAViewBeyondItsEnd()
{
    QVERIFY(m_view.startPaused(0, 10));
    ViewFixture::settle(m_view.window());
    QQuickItem *flickable = m_view.item(u"Lens Info"_s);
    while (flickable && !flickable->inherits("QQuickFlickable"))
        flickable = flickable->parentItem();
    QVERIFY(flickable);
    auto *bar = flickable->property("contentItem").value<QQuickItem *>()->childItems().first();
    QCOMPARE(flickable->width(), 268.0);
    QCOMPARE(flickable->height(), 720.0);
    QCOMPARE(flickable->property("contentHeight"), bar->height() + 360);
    QCOMPARE(flickable->property("flickDeceleration"), 20000.0);
}

void TestPlaybackSections::pictureFillsTheRest()
{
    QVERIFY(m_view.startPaused(0, 10));
    ViewFixture::settle(m_view.window());
    QQuickItem *picture = m_view.item(u"Picture"_s)->parentItem();
    const QRectF place = picture->mapRectToScene({0, 0, picture->width(), picture->height()});
    QQuickItem *play = m_view.item(u"Play"_s);
    QCOMPARE(place.topLeft(), QPointF(268, 0));
    QCOMPARE(place.right(), 1040.0);
    const QRectF button = play->mapRectToScene({0, 0, play->width(), play->height()});
    // The third of five in a column 200 wide that stands 10 from the left.
    QCOMPARE(button.left(), 268.0 + 10 + 80);
    QCOMPARE(button.size(), QSizeF(40, 50));
    QVERIFY(place.bottom() <= button.top());
    QQuickItem *step = m_view.item(u"Step back"_s);
    QCOMPARE(step->size(), QSizeF(40, 40));
    QCOMPARE(step->mapToScene({0, 0}), QPointF(268 + 10 + 40, button.bottom()));
    QCOMPARE(step->mapToScene({0, 40}).y(), 710.0);
    // Settings: 145 wide, 20 from the right.
    QQuickItem *rate = m_view.item(u"Play step"_s);
    QCOMPARE(rate->mapToScene({rate->width(), 0}).x(), 1020.0);
    QCOMPARE(rate->parentItem()->width(), 145.0);
}

void TestPlaybackSections::vanishedSourceLeavesNoMessage()
{
    QVERIFY(m_view.start(-10, 10));
    m_view.source()->updateValues({{"camera", QJsonObject{{"cfa", 1}}}});
    QVERIFY(m_view.click(u"Color Adjustments"_s));
    ViewFixture::settle(m_view.window());
    m_view.dropSource();
    ViewFixture::settle(m_view.window());
    QCOMPARE(m_view.warnings(), QStringList());
}

void TestPlaybackSections::vanishedSourceTakesNoInput()
{
    QVERIFY(m_view.startPaused(-10, 10));
    const QPoint play = m_view.middle(u"Play"_s);
    const QPoint bracket = m_view.middle(u"Start of the range here"_s);
    const QPoint bar = m_view.middle(u"Frames"_s);
    m_view.dropSource();
    for (const QPoint &point : {play, bracket, bar})
        QTest::mouseClick(m_view.window(), Qt::LeftButton, {}, point);
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Space})
        QTest::keyClick(m_view.window(), key);
    QCOMPARE(m_view.warnings(), QStringList());
}

VIEW_TEST_MAIN(TestPlaybackSections)
#include "tst_playback_sections.moc"
