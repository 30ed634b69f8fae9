#include "save/file_name_template.h"
#include "tests/support/vesk_test_main.h"

#include <QFile>
#include <limits>

using namespace Qt::StringLiterals;

/** What becomes of a name as the operator types it. */
class TestFileNameTemplate : public QObject
{
    Q_OBJECT

private:
    static qlonglong counter() { return VeskApp::instance()->setting("save/filename_seq", -1).toLongLong(); }
    static void setCounter(const QVariant &value)
    {
        VeskApp::instance()->setSetting("save/filename_seq", value);
    }
    static FileNameTemplate native(const QString &name, qlonglong startFr = 0)
    {
        return {u"/f"_s, name, Util::FormatVesk, startFr};
    }
    static void touch(const QString &path)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

private slots:
    void init() { setCounter(7); }

    void nameIsReadAsTextAndTags_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expanded"); // of frame 0 of a save from frame 42 on
        QTest::newRow("text") << "shot" << "shot";
        QTest::newRow("sequence number") << "take_<seq:4>" << "take_0007";
        QTest::newRow("no width") << "<seq>-<fr>" << "7-42";
        QTest::newRow("frame number") << "a<fr:6>b" << "a000042b";
        QTest::newRow("width too small") << "<fr:1>" << "42";
        QTest::newRow("width that is none") << "<fr:x>" << "42";
        QTest::newRow("negative width") << "<fr:-9>" << "42";
        QTest::newRow("what follows the width") << "<fr:3:9>" << "042";
        QTest::newRow("colon in text") << "a:b" << "ab";
        QTest::newRow("unknown tag") << "<x:y>" << "xy";
        QTest::newRow("bare tag name") << "seq" << "7";
        QTest::newRow("bare tag name with width") << "fr:5" << "00042";
        QTest::newRow("tag name in a text") << "seqs" << "seqs";
        QTest::newRow("bracket that opens nothing") << "a<b" << "ab";
        QTest::newRow("bracket that closes nothing") << "a>b" << "ab";
        QTest::newRow("bracket in a bracket") << "<<fr>>" << "<fr";
        QTest::newRow("capital letters") << "<FR>" << "FR";
        QTest::newRow("empty tag") << "a<>b" << "ab";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("time as the dialog gives it") << "2025-01-01T101500Z" << "2025-01-01T101500Z";
        QTest::newRow("letters beyond ASCII") << "Prüfung_<fr:3>_試験" << "Prüfung_042_試験";
    }

    void nameIsReadAsTextAndTags()
    {
        QFETCH(QString, name);
        QTEST(native(name, 42).expand(0), "expanded");
    }

    void frameNumbersCountOnFromTheFirstFrame()
    {
        const FileNameTemplate name = native(u"<fr:4>"_s, -2);
        QCOMPARE(name.expand(0), u"-002"_s);
        QCOMPARE(name.expand(2), u"0000"_s);
        QCOMPARE(name.expand(12), u"0010"_s);
    }

    void numbersAtTheEndOfTheScaleWrap()
    {
        const qlonglong last = std::numeric_limits<qlonglong>::max();
        QCOMPARE(native(u"<fr>"_s, last).expand(0), u"9223372036854775807"_s);
        QCOMPARE(native(u"<fr>"_s, last).expand(1), u"-9223372036854775808"_s);
    }

    void widthBeyondAnyFileNameFillsNoMemory()
    {
        QCOMPARE(native(u"<fr:2000000000>"_s, 1).expand(0).size(), 255);
    }

    void pathIsFolderNameSuffixAndExtension_data()
    {
        QTest::addColumn<Util::Format>("format");
        QTest::addColumn<QString>("path");
        QTest::newRow("native") << Util::FormatVesk << "/f/n (2).vesk";
        QTest::newRow("AVI") << Util::FormatAvi << "/f/n (2).avi";
        QTest::newRow("MP4") << Util::FormatMp4 << "/f/n (2).mp4";
        QTest::newRow("images") << Util::FormatTiff << "/f/n (2).tiff";
        QTest::newRow("none") << Util::Format(9) << "/f/n (2).";
    }

    void pathIsFolderNameSuffixAndExtension()
    {
        QFETCH(Util::Format, format);
        QTEST(FileNameTemplate(u"/f"_s, u"n"_s, format, 0).filePath(0, u" (2)"_s), "path");
    }

    void emptyNameLeavesTheExtension()
    {
        QVERIFY(native({}).elements().isEmpty());
        QCOMPARE(native({}).filePath(0, {}), u"/f/.vesk"_s);
    }

    void elementsTellTheirTypeAndWidth()
    {
        const auto elements = native(u"a<fr:6><seq>b:c"_s).elements();
        QCOMPARE(elements.size(), 4);
        QCOMPARE(elements[0].type, 0);
        QCOMPARE(elements[0].text, u"a"_s);
        QCOMPARE(elements[1].type, 1);
        QCOMPARE(elements[1].width, 6);
        QCOMPARE(elements[2].type, 2);
        QCOMPARE(elements[2].width, 0);
        QCOMPARE(elements[3].type, 0);
        QCOMPARE(elements[3].text, u"bc"_s);
    }

    void eachNameWithASequenceTagTakesOneNumber()
    {
        QCOMPARE(native(u"take_<seq:4>"_s).seq(), 7);
        QCOMPARE(counter(), 8);
        QCOMPARE(native(u"seq"_s).expand(0), u"8"_s);
        QCOMPARE(counter(), 9);
    }

    void nameWithoutSequenceTagLeavesTheCounter()
    {
        QCOMPARE(native(u"take_<fr>"_s).seq(), 7);
        QCOMPARE(counter(), 7);
    }

    void imagesCountFromZeroAndLeaveTheCounter()
    {
        const FileNameTemplate name(u"/f"_s, u"<seq:2>"_s, Util::FormatTiff, 100);
        QCOMPARE(name.expand(0), u"00"_s);
        QCOMPARE(name.expand(11), u"11"_s);
        QCOMPARE(counter(), 7);
    }

    void counterThatWasNeverSetBeginsAtZero()
    {
        VeskApp::instance()->settings()->remove("save/filename_seq");
        QCOMPARE(native(u"<seq>"_s).expand(0), u"0"_s);
        QCOMPARE(counter(), 1);
    }

    void counterThatIsNoNumberCountsAsZero()
    {
        setCounter(u"many"_s);
        QCOMPARE(native(u"<seq>"_s).expand(0), u"0"_s);
        QCOMPARE(counter(), 1);
    }

    void frameTagIsAFrameOrASequenceNumber_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("has");
        QTest::newRow("none") << "shot<x>" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("frame number") << "a<fr:6>" << true;
        QTest::newRow("sequence number") << "<seq>" << true;
        QTest::newRow("bare") << "fr" << true;
    }

    void frameTagIsAFrameOrASequenceNumber()
    {
        QFETCH(QString, name);
        QTEST(native(name).hasFrameTag(), "has");
    }

    void nameIsReplacedOrContinued()
    {
        FileNameTemplate name = native(u"a"_s, 3);
        name.setName(u"_<fr:2>"_s, true);
        QCOMPARE(name.expand(0), u"a_03"_s);
        name.setName(u"b"_s, false);
        QCOMPARE(name.expand(0), u"b"_s);
    }

    void takenNameGetsTheFirstFreeNumberFromTwoOn()
    {
        const QTemporaryDir folder;
        const FileNameTemplate name(folder.path(), u"n"_s, Util::FormatVesk, 0);
        QCOMPARE(name.freeSuffix(0), QString());
        touch(folder.filePath("n (2).vesk"));
        QCOMPARE(name.freeSuffix(0), QString());
        touch(folder.filePath("n.vesk"));
        QCOMPARE(name.nextFreeSuffixNumber(0), 3);
        QCOMPARE(name.freeSuffix(0), u" (3)"_s);
        touch(folder.filePath("n (4).vesk"));
        QCOMPARE(name.nextFreeSuffixNumber(0), 3);
        touch(folder.filePath("n (3).vesk"));
        QCOMPARE(name.nextFreeSuffixNumber(0), 5);
    }

    void sameNameWithAnotherExtensionIsFree()
    {
        const QTemporaryDir folder;
        touch(folder.filePath("n.avi"));
        QCOMPARE(FileNameTemplate(folder.path(), u"n"_s, Util::FormatVesk, 0).freeSuffix(0), QString());
    }
};

VESK_TEST_MAIN(TestFileNameTemplate)
#include "tst_file_name_template.moc"
