#include "file/vesk_file_format.h"
#include "tests/file/hand_made_file.h"

#include <QBuffer>
#include <QTest>

#include <limits>

using namespace HandMade;

/** The bytes of a native file, written and read. */
class TestVeskFileFormat : public QObject
{
    Q_OBJECT

private:
    static constexpr qint64 MaxInt64 = std::numeric_limits<qint64>::max();
    static constexpr qint64 MinInt64 = std::numeric_limits<qint64>::min();

    /** Reads a whole file as the source does; what is wrong with it, or nothing. */
    static QString fault(QByteArray bytes)
    {
        QBuffer device(&bytes);
        device.open(QIODevice::ReadOnly);
        const auto header = VeskFileFormat::readHeader(device);
        if (!header)
            return QStringLiteral("unsupported");
        QString error;
        const auto values = VeskFileFormat::readJson(device, *header, error);
        return values.has_value() == error.isEmpty() ? error : QStringLiteral("told nothing");
    }

private slots:
    void headerOfANewFileIsWrittenByteByByte()
    {
        const auto start = VeskFileFormat::preamble({{"first_fr", -5}, {"pt_fr_cnt", 7}}, 100, 25);
        const QByteArray json = R"({"first_fr":100,"fr_cnt":25,"last_fr":124,"pt_fr_cnt":7})";
        QCOMPARE(json.size(), 56);
        const QByteArray header = QByteArray::fromHex("5645534b"
                                                      "02000000"
                                                      "2400000000000000"
                                                      "3800000000000000"
                                                      "0010000000000000"
                                                      "03000000");
        QCOMPARE(start.bytes, header + json);
        QCOMPARE(start.dataOffset, 4096);
    }

    void numbersOfTheRangeReplaceThoseOfTheSource_data()
    {
        QTest::addColumn<qint64>("startFr");
        QTest::addColumn<qint64>("frCnt");
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("before the trigger")
            << qint64(-40) << qint64(10) << QByteArray(R"({"first_fr":-40,"fr_cnt":10,"last_fr":-31})");
        QTest::newRow("across the trigger")
            << qint64(-1) << qint64(3) << QByteArray(R"({"first_fr":-1,"fr_cnt":3,"last_fr":1})");
        QTest::newRow("one frame") << qint64(0) << qint64(1)
                                   << QByteArray(R"({"first_fr":0,"fr_cnt":1,"last_fr":0})");
        QTest::newRow("beyond 32 bits")
            << qint64(5000000000) << qint64(2)
            << QByteArray(R"({"first_fr":5000000000,"fr_cnt":2,"last_fr":5000000001})");
    }

    void numbersOfTheRangeReplaceThoseOfTheSource()
    {
        QFETCH(const qint64, startFr);
        QFETCH(const qint64, frCnt);
        const QJsonObject source{{"first_fr", 1}, {"last_fr", 2}, {"fr_cnt", 3}};
        QTEST(VeskFileFormat::preamble(source, startFr, frCnt).bytes.sliced(36), "json");
    }

    void framesOfANewFileBeginAtAMultipleOf4096_data()
    {
        QTest::addColumn<int>("jsonSize");
        QTest::addColumn<QByteArray>("header");
        const auto row = [](int jsonSize, const char *size, const char *offset) {
            const QByteArray zeros(12, '0');
            QTest::addRow("%d", jsonSize)
                << jsonSize
                << QByteArray::fromHex("5645534b020000002400000000000000" + (size + zeros) +
                                       (offset + zeros) + "03000000");
        };
        row(1500, "dc05", "0010");
        row(4059, "db0f", "0010");
        row(4060, "dc0f", "0010"); // ends at 4096: no gap
        row(4061, "dd0f", "0020");
        row(8156, "dc1f", "0020");
        row(8157, "dd1f", "0030");
    }

    void framesOfANewFileBeginAtAMultipleOf4096()
    {
        QFETCH(const int, jsonSize);
        const QByteArray before = "{\"first_fr\":0,\"fr_cnt\":1,\"last_fr\":0,\"pad\":\"";
        const QByteArray pad(jsonSize - before.size() - 2, 'x');
        const auto start = VeskFileFormat::preamble({{"pad", QString::fromLatin1(pad)}}, 0, 1);
        QTEST(start.bytes.first(36), "header");
        QCOMPARE(start.bytes.sliced(36), before + pad + "\"}");
        QCOMPARE(start.dataOffset, qint64(uchar(start.bytes[25])) * 256);
    }

    void namesOutsideOfAsciiAreWrittenInUtf8()
    {
        const auto start = VeskFileFormat::preamble({{"n", QStringLiteral("K\u00E4\u6D4B")}}, 0, 1);
        const QByteArray json = "{\"first_fr\":0,\"fr_cnt\":1,\"last_fr\":0,\"n\":\"K\xC3\xA4\xE6\xB5\x8B\"}";
        QCOMPARE(start.bytes.sliced(36), json);
        QCOMPARE(start.bytes[16], char(json.size()));
    }

    void everyFieldOfAHeaderIsRead_data()
    {
        QTest::addColumn<quint32>("version");
        QTest::addColumn<quint32>("dataFormat");
        QTest::newRow("version 2") << 2U << 0xD4C3B2A1U;
        QTest::newRow("version 1 has no data format") << 1U << 0U;
        QTest::newRow("version 0 has no data format") << 0U << 0U;
    }

    void everyFieldOfAHeaderIsRead()
    {
        QFETCH(const quint32, version);
        QByteArray bytes = "VESK" + little(version, 4) +
                           QByteArray("\1\2\3\4\5\6\7\x08\x11\x12\x13\x14\x15\x16\x17\x18"
                                      "\x21\x22\x23\x24\x25\x26\x27\x28\xA1\xB2\xC3\xD4",
                                      28);
        QBuffer device(&bytes);
        QVERIFY(device.open(QIODevice::ReadOnly));
        const auto header = VeskFileFormat::readHeader(device).value_or(VeskFileFormat::Header());
        QCOMPARE(header.version, version);
        QCOMPARE(header.jsonOffset, 0x0807060504030201ULL);
        QCOMPARE(header.jsonSize, 0x1817161514131211ULL);
        QCOMPARE(header.dataOffset, 0x2827262524232221ULL);
        QTEST(header.dataFormat, "dataFormat");
    }

    void otherFilesAreUnsupported_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray good = usual("{}", {});
        QTest::newRow("empty") << QByteArray();
        for (int i = 0; i < 4; ++i)
            QTest::addRow("magic wrong at %d", i) << QByteArray(good).replace(i, 1, "e");
        QTest::newRow("version 3") << QByteArray(good).replace(4, 1, "\3");
        QTest::newRow("version 2^24") << QByteArray(good).replace(7, 1, "\1");
        QTest::newRow("version 2^32 - 1") << QByteArray(good).replace(4, 4, "\xFF\xFF\xFF\xFF");
        for (int size = 1; size < 8; ++size)
            QTest::addRow("%d bytes", size) << good.first(size);
    }

    void otherFilesAreUnsupported()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(fault(bytes), "unsupported");
    }

    void blocksMayLieAnywhere_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray json = "{\"a\":1}";
        QTest::newRow("version 2") << usual(json, {});
        QTest::newRow("version 1") << header(1, 32, 7, 4096) + json;
        QTest::newRow("version 0") << header(0, 32, 7, 39) + json;
        QTest::newRow("behind the frames") << header(2, 100, 7, 36) + QByteArray(64, 'f') + json;
        QTest::newRow("frames inside of the header") << header(2, 36, 7, 0) + json;
        QTest::newRow("frames inside of the description") << header(2, 36, 7, 40) + json;
        QTest::newRow("no gap and no frames") << header(2, 36, 7, 43) + json;
        QTest::newRow("ends before the gap") << header(2, 36, 7, 4096) + json;
        QTest::newRow("description up to the last byte") << header(2, 40, 7, 36) + "ffff" + json;
    }

    void blocksMayLieAnywhere()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(fault(bytes), "");
    }

    void damagedFilesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray json = "{\"a\":1}";
        const QByteArray good = usual(json, QByteArray(100, 'f'));
        for (int size = 8; size < 36 + 7; ++size)
            QTest::addRow("%d bytes", size) << good.first(size);
        const quint64 huge = 1ULL << 63;
        const auto with = [&json](quint64 jsonOffset, quint64 jsonSize, quint64 dataOffset) {
            return header(2, jsonOffset, jsonSize, dataOffset) + json;
        };
        QTest::newRow("json size 2^63") << with(36, huge, 4096);
        QTest::newRow("json size 2^64 - 1") << with(36, ~0ULL, 4096);
        QTest::newRow("json size wraps round") << with(36, ~0ULL - 28, 4096);
        QTest::newRow("json size one too many") << with(36, 8, 4096);
        QTest::newRow("json offset 2^63") << with(huge, 7, 4096);
        QTest::newRow("json offset wraps round") << with(~0ULL - 6, 7, 4096);
        QTest::newRow("json offset one too far") << with(37, 7, 4096);
        QTest::newRow("data offset 2^63") << with(36, 7, huge);
        QTest::newRow("data offset 2^64 - 1") << with(36, 7, ~0ULL);
        QTest::newRow("data offset behind the gap") << with(36, 7, 4097);
        QTest::newRow("all of them 2^63") << with(huge, huge, huge);
        QTest::newRow("no description") << with(36, 0, 4096);
        QTest::newRow("description in the header") << with(0, 36, 4096);
        QTest::newRow("description in the frames") << header(2, 36, 7, 36) + QByteArray(7, '\xA5');
        QTest::newRow("version 1 cut off") << header(1, 0, 0, 0).first(31);
    }

    void damagedFilesAreRefused()
    {
        QFETCH(const QByteArray, bytes);
        const QString told = fault(bytes);
        QVERIFY(!told.isEmpty());
        QVERIFY(told != "unsupported" && told != "told nothing");
    }

    void descriptionThatIsNoObjectIsRefused_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("told");
        QTest::newRow("null") << QByteArray("null") << "illegal value";
        QTest::newRow("number") << QByteArray("5") << "illegal value";
        QTest::newRow("array") << QByteArray("[]") << "the description is no object";
        QTest::newRow("cut off") << QByteArray("{\"a\":") << "unterminated object";
        QTest::newRow("behind the end") << QByteArray("{}x") << "garbage at the end of the document";
        QTest::newRow("no utf-8") << QByteArray("{\"a\":\"\xFF\xFE\"}") << "invalid UTF8 string";
        QTest::newRow("nested deeply")
            << QByteArray("{\"a\":") + QByteArray(100000, '[') << "too deeply nested document";
        QTest::newRow("nested deeply and closed")
            << "{\"a\":" + QByteArray(100000, '[') + QByteArray(100000, ']') + "}"
            << "too deeply nested document";
        QTest::newRow("too large") << "{\"a\":\"" + QByteArray(1024 * 1024, 'x') + "\"}"
                                   << "the description is too large";
    }

    void descriptionThatIsNoObjectIsRefused()
    {
        QFETCH(const QByteArray, json);
        QTEST(fault(usual(json, {})), "told");
    }

    void descriptionOfOneMebibyteIsRead()
    {
        const QByteArray json = "{\"a\":\"" + QByteArray(1024 * 1024 - 8, 'x') + "\"}";
        QCOMPARE(json.size(), 1024 * 1024);
        QCOMPARE(fault(usual(json, {})), "");
    }

    void positionOfAFrameIsCountedFromTheFirst_data()
    {
        QTest::addColumn<qint64>("dataOffset");
        QTest::addColumn<quint32>("frameSize");
        QTest::addColumn<qint64>("fr");
        QTest::addColumn<qint64>("firstFr");
        QTest::addColumn<qint64>("position");
        const auto row = [](const char *name, qint64 dataOffset, quint32 frameSize, qint64 fr, qint64 firstFr,
                            qint64 position) {
            QTest::newRow(name) << dataOffset << frameSize << fr << firstFr << position;
        };
        constexpr qint64 none = -1;
        row("first", 4096, 925696, 40, 40, 4096);
        row("sixty on", 8192, 925696, 100, 40, 8192 + 55541760);
        row("before the trigger", 4096, 1000, -3, -10, 11096);
        row("beyond 4 GB", 4096, 1048608, 1500, -3000, 4718740096);
        row("before the file", 4096, 1000, -15, -10, none);
        row("before the first but in the file", 4096, 1000, -11, -10, none);
        row("largest frame size", 0, 0xFFFFFFFF, 2, 0, 8589934590);
        row("no marker yet", 4096, 1000, MaxInt64, 0, none);
        row("lowest number", 4096, 1000, MinInt64, 5, none);
        row("sum too large", MaxInt64, 1, 1, 0, none);
    }

    void positionOfAFrameIsCountedFromTheFirst()
    {
        QFETCH(const qint64, dataOffset);
        QFETCH(const quint32, frameSize);
        QFETCH(const qint64, fr);
        QFETCH(const qint64, firstFr);
        QTEST(VeskFileFormat::framePosition(dataOffset, frameSize, fr, firstFr).value_or(-1), "position");
    }

    void recordsAreReadAsFarAsTheyGo_data()
    {
        QTest::addColumn<qint64>("position");
        QTest::addColumn<quint32>("frameSize");
        QTest::addColumn<qint64>("frames");
        QTest::addColumn<QByteArray>("records");
        const auto row = [](const char *name, qint64 position, quint32 frameSize, qint64 frames,
                            const char *records) {
            QTest::newRow(name) << position << frameSize << frames << QByteArray(records);
        };
        row("one", 2, 3, 1, "cde");
        row("all", 0, 5, 2, "abcdefghij");
        row("short", 8, 3, 1, "ij");
        row("second one short", 4, 4, 2, "efghij");
        row("at the end", 10, 3, 1, "");
        row("behind the end", 11, 3, 1, "");
        row("far behind the end", MaxInt64, 3, 1, "");
        row("largest that is read", 0, 32 * 1024 * 1024, 1, "abcdefghij");
        row("larger than any", 0, 32 * 1024 * 1024 + 1, 1, "");
        row("more than there can be", 0, 32 * 1024 * 1024, MaxInt64, "abcdefghij");
        row("less than none", 0, 3, -1, "");
        row("of no size", 0, 0, MaxInt64, "");
    }

    void recordsAreReadAsFarAsTheyGo()
    {
        QFETCH(const qint64, position);
        QFETCH(const quint32, frameSize);
        QFETCH(const qint64, frames);
        QByteArray bytes = "abcdefghij";
        QBuffer device(&bytes);
        QVERIFY(device.open(QIODevice::ReadOnly));
        QTEST(VeskFileFormat::readRecords(device, position, frameSize, frames), "records");
        QCOMPARE(VeskFileFormat::readRecords(device, {}, frameSize, frames), "");
    }
};

QTEST_APPLESS_MAIN(TestVeskFileFormat)
#include "tst_vesk_file_format.moc"
