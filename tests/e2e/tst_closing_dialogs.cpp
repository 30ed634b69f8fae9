#include "tests/e2e/session.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

/// The user closes the window while a dialog is open. The program ends at once, without a complaint; a dialog
/// that asks for an answer first is closed first.
class TestClosingDialogs : public QObject
{
    Q_OBJECT

private slots:
    void programEndsWithADialogOpen_data();
    void programEndsWithADialogOpen();
    void programEndsInTheMidstOfAFirmwareUpload();

private:
    bool fold(const QStringList &sections);
    bool openTake(const QByteArray &order);
    bool pressInTake(const QString &button, bool locked = false);
    bool pressInPanel(const QString &button, const QString &section);
    bool editFileName();
    bool ask(const QString &dialog);
    std::optional<Screen::Window> window(const QString &title) const
    {
        return m_session->screen.window(title);
    }
    void closeProgram();

    std::unique_ptr<Session> m_session;
};

static bool waitFor(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 20000);
}

/// Folds sections, so that those below come into reach.
bool TestClosingDialogs::fold(const QStringList &sections)
{
    for (const QString &section : sections)
        m_session->toggleSection(section, true);
    return true;
}

bool TestClosingDialogs::openTake(const QByteArray &order)
{
    WindowLayout &layout = m_session->layout();
    const auto drawn = [](QRgb colour) { return qRed(colour) > 180; };
    if (!m_session->camera.makeTake(order) || !m_session->wait([&](const QImage &now) {
            return Session::count(now, layout.takeTabIcon(1), drawn) > 20;
        }))
        return false;
    m_session->click(layout.takeTab(1).center());
    layout.setPanel(WindowLayout::Panel::Take);
    return waitFor([this] { return m_session->camera.requests("POST", u"/xfer"_s).size() > 10; });
}

bool TestClosingDialogs::pressInTake(const QString &button, bool locked)
{
    if (!openTake(locked ? R"({"first":-100,"last":500,"locked":true})" : R"({"first":-100,"last":500})"))
        return false;
    m_session->click(m_session->layout().widget(button).center());
    return true;
}

bool TestClosingDialogs::pressInPanel(const QString &button, const QString &section)
{
    const QStringList above = {u"Camera"_s, u"Acquisition"_s, u"Frame Buffer"_s, u"Image Tools"_s,
                               u"Image Adjustments"_s};
    // Those below come into reach when all above are folded.
    if (!above.contains(section) && !fold(above))
        return false;
    if (section == "Firmware"_L1) {
        fold({u"SSD"_s, u"SSD Autosave"_s, u"Lens & Shutter"_s});
        m_session->toggleSection(section, false);
    }
    m_session->click(m_session->layout().widget(button, section).center());
    return true;
}

bool TestClosingDialogs::editFileName()
{
    if (!m_session->camera.put(u"/ssd/autosave/mode"_s, "1"))
        return false;
    const QString section = u"SSD Autosave"_s;
    m_session->layout().setShown(section, {u"Save"_s, u"After Save"_s, u"File Name"_s, u"File Name Seq"_s});
    fold({u"Camera"_s, u"Acquisition"_s, u"Frame Buffer"_s, u"Image Tools"_s, u"Image Adjustments"_s});
    const QRect row = m_session->layout().widget(u"File Name"_s, section);
    return waitFor([&] {
        m_session->click({row.right() - 10, row.center().y()});
        return QTest::qWaitFor([this] { return window(u"SSD Auto Save - Edit File Name"_s).has_value(); },
                               1000);
    });
}

bool TestClosingDialogs::ask(const QString &dialog)
{
    if (dialog == "connect"_L1)
        return m_session->pickFromFileMenu(0);
    if (dialog == "open files"_L1)
        return m_session->pickFromFileMenu(1);
    if (dialog == "listing"_L1)
        return m_session->pickFromFileMenu(2);
    if (dialog == "delete all takes"_L1)
        return m_session->pickFromFileMenu(3);
    if (dialog == "partition"_L1)
        return pressInPanel(u"Partition"_s, u"Frame Buffer"_s);
    if (dialog == "format"_L1)
        return pressInPanel(u"Format"_s, u"SSD"_s);
    if (dialog == "firmware"_L1)
        return pressInPanel(u"Firmware Update"_s, u"Firmware"_s);
    if (dialog == "autosave's file name"_L1)
        return editFileName();
    if (dialog == "save"_L1)
        return pressInTake(u"Save..."_s);
    if (dialog == "delete a take"_L1 || dialog == "locked take"_L1)
        return pressInTake(u"Delete..."_s, dialog == "locked take"_L1);
    if (dialog == "camera's name"_L1)
        m_session->click(m_session->layout().editNameButton());
    if (dialog == "no slot left"_L1)
        return m_session->camera.force(u"acq/bref_state"_s, "4") &&
               waitFor([this] { return m_session->camera.requests("GET", u"/"_s).size() > 8; }) &&
               pressInPanel(u"Black Reference"_s, u"Acquisition"_s);
    return true;
}

void TestClosingDialogs::programEndsWithADialogOpen_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("modal");
    const QSize question(200, 100);
    QTest::newRow("connect") << u"Connect Camera"_s << QSize(220, 90) << false;
    QTest::newRow("camera's name") << u"Camera - Edit Name"_s << QSize(480, 96) << true;
    QTest::newRow("partition") << u"Partition"_s << QSize(175, 100) << false;
    QTest::newRow("firmware") << u"Firmware Update"_s << QSize(480, 160) << true;
    QTest::newRow("listing") << u"Open SSD Take"_s << QSize(512, 512) << false;
    QTest::newRow("format") << u"SSD Format"_s << QSize(320, 160) << true;
    QTest::newRow("autosave's file name") << u"SSD Auto Save - Edit File Name"_s << QSize(480, 160) << true;
    QTest::newRow("delete a take") << u"VESK"_s << question << false;
    QTest::newRow("locked take") << u"VESK"_s << question << false;
    QTest::newRow("delete all takes") << u"VESK"_s << question << false;
    QTest::newRow("no slot left") << u"VESK"_s << QSize(240, 100) << false;
    QTest::newRow("save") << u"Save"_s << QSize(480, 640) << true;
    QTest::newRow("open files") << u"Open Vesk File"_s << QSize() << false;
}

void TestClosingDialogs::closeProgram()
{
    m_session->screen.close(*m_session->screen.window(u"VESK"_s, m_session->window().size()));
    QCOMPARE(m_session->program().exitCode(4000), 0);
    QCOMPARE(m_session->program().complaints(), QStringList());
}

void TestClosingDialogs::programEndsWithADialogOpen()
{
    QFETCH(const QString, title);
    QFETCH(const QSize, size);
    m_session = std::make_unique<Session>();
    QCOMPARE(m_session->start(), QString());
    QVERIFY(m_session->waitForLivePicture());
    const bool asked = ask(QString::fromLatin1(QTest::currentDataTag()));
    const auto dialog = [&] { return m_session->screen.window(title, size); };
    const bool there = asked && waitFor([&] { return dialog().has_value(); });
    QTest::qWait(300); // until it is drawn
    const QString picture = QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-');
    m_session->screen.keepPicture((there ? u"open-"_s : u"failed-"_s) + picture);
    QVERIFY(there);
    QFETCH(const bool, modal);
    if (modal) {
        m_session->screen.close(*m_session->screen.window(u"VESK"_s));
        QVERIFY(!m_session->program().exitCode(1000));
        m_session->screen.close(*dialog());
        QTRY_VERIFY(!dialog());
    }
    closeProgram();
}

void TestClosingDialogs::programEndsInTheMidstOfAFirmwareUpload()
{
    m_session = std::make_unique<Session>();
    QCOMPARE(m_session->start(), QString());
    QVERIFY(m_session->waitForLivePicture());
    QFile file(m_session->program().workingFolder() + u"/camera 4.q4fw"_s);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(20'000'000));
    file.close();
    QVERIFY(m_session->camera.setFault(R"({"on":"q4fw","kind":"slow-upload","ms":200})"));
    QVERIFY(pressInPanel(u"Firmware Update"_s, u"Firmware"_s));
    Screen &screen = m_session->screen;
    const QString title = u"Firmware Update"_s;
    const QString choice = u"Open Q4FW File"_s;
    QTRY_VERIFY(window(title));
    screen.move(*window(title), {400, 300});
    QTRY_COMPARE(screen.geometry(*window(title)).topLeft(), QPoint(400, 300));
    const auto clickIn = [&](QPoint place, const QString &in) {
        const QPoint point = screen.geometry(*window(in)).topLeft() + place;
        QVERIFY(screen.input(u"mousemove %1 %2 sleep 0.2 click 1"_s.arg(point.x()).arg(point.y())));
    };
    clickIn({458, 47}, title);
    QTRY_VERIFY(window(choice));
    screen.focus(*window(choice));
    const QRect place = screen.geometry(*window(choice));
    // The only file there is marked.
    QTRY_VERIFY(Session::count(screen.picture(), place, [](QRgb colour) { return colour == 0xFFD25F15; }) >
                5000);
    clickIn({100, 62}, choice);
    clickIn({460, 375}, choice);
    QTRY_VERIFY(!window(choice));
    screen.focus(*window(title));
    clickIn({120, 135}, title);
    QTRY_VERIFY(m_session->camera.upload()["received"_L1].toInt() > 100'000);
    screen.close(*window(title));
    QTRY_VERIFY(!window(title));
    QVERIFY(!m_session->camera.upload()["complete"_L1].toBool());
    closeProgram();
}

QTEST_GUILESS_MAIN(TestClosingDialogs)
#include "tst_closing_dialogs.moc"
