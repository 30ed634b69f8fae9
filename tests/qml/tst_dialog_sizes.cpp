#include "app/fonts.h"
#include "app/vesk_app.h"
#include "tests/qml/dialog_fixture.h"
#include "tests/qml/view_test_main.h"
#include "tests/qml/window_check.h"

#include <QDir>
#include <QFont>
#include <QImage>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

/** Each dialog on a display of QT_SCALE_FACTOR times the usual density. */
class TestDialogSizes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void dialogOpensAtItsSize_data() { DialogFixture::addDialogs(); }
    void dialogOpensAtItsSize();
    void listingIsWholeAtItsLeastSize();

private:
    DialogFixture m_view;
};

/** Texts are as wide as they are in the program. */
void TestDialogSizes::initTestCase()
{
    initFonts(*VeskApp::instance());
    QCOMPARE(QGuiApplication::font().family(), u"Inter"_s);
}

void TestDialogSizes::cleanup()
{
    QCOMPARE(m_view.end(), QStringList());
}

/** Keeps it in the folder of VESK_PICTURES when that is set. */
static void keep(const QImage &picture, double scale)
{
    const QString folder = qEnvironmentVariable("VESK_PICTURES");
    if (folder.isEmpty())
        return;
    const QString name =
        u"dialog-%1-%2.png"_s.arg(QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-'))
            .arg(qRound(scale * 100));
    QVERIFY(QDir().mkpath(folder) && picture.save(folder + u'/' + name));
}

void TestDialogSizes::dialogOpensAtItsSize()
{
    QFETCH(const int, dialog);
    QQuickWindow *window = m_view.startWithDialog(dialog);
    QVERIFY(window);
    const QSize size = DialogFixture::design(dialog).size;
    QCOMPARE(window->size(), size);
    const double scale = qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s).toDouble();
    QCOMPARE(window->effectiveDevicePixelRatio(), scale);
    const QImage picture = window->grabWindow();
    QCOMPARE(picture.size(), size * scale);
    keep(picture, scale);
    QCOMPARE(WindowCheck::cutPieces(window).join(u", "_s), QString());
    QCOMPARE(WindowCheck::overlappingPieces(window).join(u", "_s), QString());
}

void TestDialogSizes::listingIsWholeAtItsLeastSize()
{
    QQuickWindow *window = m_view.startWithDialog(DialogFixture::Listing);
    QVERIFY(window);
    QCOMPARE(window->minimumSize(), QSize(512, 300));
    window->resize(window->minimumSize());
    QTRY_COMPARE(window->size(), QSize(512, 300));
    ViewFixture::settle(window);
    QCOMPARE(m_view.names().size(), 3);
    QCOMPARE(WindowCheck::cutPieces(window).join(u", "_s), QString());
    QCOMPARE(WindowCheck::overlappingPieces(window).join(u", "_s), QString());
}

VIEW_TEST_MAIN(TestDialogSizes)
#include "tst_dialog_sizes.moc"
