#include "camera/vesk_value.h"

#include <QJsonValue>
#include <QSignalSpy>
#include <QTest>

/** The typed store behind every setting. */
class TestVeskValue : public QObject
{
    Q_OBJECT

private slots:
    void jsonBecomesTheTypeOfTheValue_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QJsonValue>("json");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("text");
        const int i = QMetaType::Int;
        const int u = QMetaType::UInt;
        const int d = QMetaType::Double;
        const int s = QMetaType::QString;
        const int b = QMetaType::Bool;
        const int h = VeskValue::HexUInt64;
        QTest::newRow("int") << i << QJsonValue(5) << QVariant(5) << "5";
        QTest::newRow("negative int") << i << QJsonValue(-7) << QVariant(-7) << "-7";
        QTest::newRow("int from text") << i << QJsonValue("5") << QVariant(0) << "0";
        QTest::newRow("int from fraction") << i << QJsonValue(2.5) << QVariant(0) << "0";
        QTest::newRow("int from object") << i << QJsonValue(QJsonObject()) << QVariant(0) << "0";
        QTest::newRow("uint") << u << QJsonValue(4294967295.0) << QVariant(4294967295U) << "4294967295";
        QTest::newRow("uint narrowed") << u << QJsonValue(4294967298.0) << QVariant(2U) << "2";
        QTest::newRow("double") << d << QJsonValue(2.5) << QVariant(2.5) << "2.500000";
        QTest::newRow("double from bool") << d << QJsonValue(true) << QVariant(0.0) << "0.000000";
        QTest::newRow("text") << s << QJsonValue("abc") << QVariant("abc") << "abc";
        QTest::newRow("text from number") << s << QJsonValue(7) << QVariant(QString("")) << "";
        QTest::newRow("bool") << b << QJsonValue(true) << QVariant(true) << "true";
        QTest::newRow("bool from number") << b << QJsonValue(1) << QVariant(false) << "false";
        QTest::newRow("hex") << h << QJsonValue("ff") << QVariant(255ULL) << "255";
        QTest::newRow("hex 64 bit") << h << QJsonValue("ffffffffffffffff") << QVariant(~0ULL)
                                    << "18446744073709551615";
        QTest::newRow("no hex") << h << QJsonValue("xyz") << QVariant(0ULL) << "0";
    }

    void jsonBecomesTheTypeOfTheValue()
    {
        QFETCH(int, type);
        QFETCH(QJsonValue, json);
        QFETCH(QVariant, stored);
        QFETCH(QString, text);
        VeskValue value({"a"}, type, nullptr);
        value.setValueFromJson(json);
        QCOMPARE(value.variant(), stored);
        QCOMPARE(value.variant().typeId(), stored.typeId());
        QCOMPARE(value.text(), text);
    }

    void anyOtherTypeKeepsValuesAsTheyCome()
    {
        VeskValue value({"a"}, QMetaType::QRectF, nullptr);
        QCOMPARE(value.type(), 41);
        value.updateValue(QVariant(QByteArray("raw")));
        QCOMPARE(value.variant(), QVariant(QByteArray("raw")));
    }

    void emptyUntilTheFirstUpdate()
    {
        const VeskValue value({"a"}, QMetaType::Int, nullptr);
        QVERIFY(!value.variant().isValid());
    }

    void samePresentValueTellsNothing()
    {
        VeskValue value({"a"}, QMetaType::Int, nullptr);
        QVERIFY(value.updateValue(3));
        QSignalSpy changed(&value, &VeskValue::valueChanged);
        QVERIFY(!value.updateValue(3));
        QVERIFY(!value.setValueFromJson(3));
        value.setValue(3, false);
        QCOMPARE(changed.count(), 0);
    }

    void silentWriteTellsNoLocalChange()
    {
        VeskValue value({"a"}, QMetaType::Int, nullptr);
        QSignalSpy changed(&value, &VeskValue::valueChanged);
        QSignalSpy local(&value, &VeskValue::valueChangedLocal);
        value.setValue(1, true);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(local.count(), 0);
        value.setValue(2, false);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(local.count(), 1);
        QCOMPARE(local[0][0].value<VeskValue *>(), &value);
    }

    void samePolledHexTextIsToldEachTime()
    {
        VeskValue value({"a"}, VeskValue::HexUInt64, nullptr);
        QSignalSpy changed(&value, &VeskValue::valueChanged);
        value.setValueFromJson(QJsonValue("ff"));
        value.setValueFromJson(QJsonValue("ff"));
        QCOMPARE(changed.count(), 2);
        QCOMPARE(value.text(), "255");
    }

    void givenStorageIsWrittenAndNotFreed()
    {
        QVariant storage = 1.0;
        {
            VeskValue value({"a"}, QMetaType::Double, nullptr, &storage);
            QCOMPARE(value.variant(), QVariant(1.0));
            value.updateValue(2);
        }
        QCOMPARE(storage, QVariant(2.0));
        QCOMPARE(storage.typeId(), int(QMetaType::Double));
    }
};

QTEST_GUILESS_MAIN(TestVeskValue)
#include "tst_vesk_value.moc"
