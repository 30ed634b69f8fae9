#include "app/json_settings.h"

#include <QBuffer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

/** The settings file: what stands in it, and what a file of any content does. */
class TestJsonSettings : public QObject
{
    Q_OBJECT

private:
    static QByteArray written(const QSettings::SettingsMap &map)
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        [&] { QVERIFY(writeJsonSettings(buffer, map)); }();
        return buffer.data();
    }

    static bool read(QByteArray json, QSettings::SettingsMap &map)
    {
        QBuffer buffer(&json);
        buffer.open(QIODevice::ReadOnly);
        return readJsonSettings(buffer, map);
    }

private slots:
    void sectionsOfAKeyAreNestedObjects()
    {
        const QByteArray json = written({{"a/b/c", 1}, {"a/d", 2}});
        const QJsonObject object = QJsonDocument::fromJson(json).object();
        QCOMPARE(object.keys(), QStringList{"a"});
        const QJsonObject a = object["a"].toObject();
        QCOMPARE(a["d"].toInt(), 2);
        QCOMPARE(a["b"].toObject()["c"].toInt(), 1);
        QVERIFY(json.contains("\n    \"a\": {"));

        QSettings::SettingsMap map;
        QVERIFY(read(json, map));
        QCOMPARE(map.keys(), (QStringList{"a/b/c", "a/d"}));
        QCOMPARE(map["a/b/c"].toInt(), 1);
        QCOMPARE(map["a/d"].toInt(), 2);
    }

    void keyWithOneSectionStandsAtTheTop()
    {
        QCOMPARE(QJsonDocument::fromJson(written({{"x", QStringLiteral("y")}})).object()["x"].toString(),
                 QStringLiteral("y"));
    }

    void keyNamedLikeItsGroupSurvives()
    {
        QSettings::SettingsMap map;
        QVERIFY(read(written({{"a/a", 7}, {"a/a2/a", QStringLiteral("__key__")}}), map));
        QCOMPARE(map.size(), 2);
        QCOMPARE(map["a/a"].toInt(), 7);
        QCOMPARE(map["a/a2/a"].toString(), QStringLiteral("__key__"));
    }

    void emptyNestedObjectLeavesNoKey()
    {
        QSettings::SettingsMap map;
        QVERIFY(read("{\"a\":{},\"b\":[1,2],\"c\":null}", map));
        QCOMPARE(map.keys(), (QStringList{"b", "c"}));
        QCOMPARE(map["b"].toList(), (QVariantList{1, 2}));
    }

    void textThatIsNoJsonGivesNoKeys_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("ini") << QByteArray("[window]\nx=10\n");
        QTest::newRow("cut") << QByteArray("{\"a\":{\"b\":1");
        QTest::newRow("binary") << QByteArray("\0\xff\xfe{}", 5);
        QTest::newRow("deep") << QByteArray(100000, '[');
    }

    void textThatIsNoJsonGivesNoKeys()
    {
        QFETCH(QByteArray, text);
        QSettings::SettingsMap map;
        QVERIFY(!read(text, map));
        QVERIFY(map.isEmpty());
    }

    void settingsObjectKeepsKeysAcrossProcesses()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("s.json");
        {
            QSettings settings(path, jsonSettingsFormat());
            settings.setValue("window/x", 10);
            settings.setValue("cameras/123/main_pane_expanded", false);
        }
        QSettings settings(path, jsonSettingsFormat());
        QCOMPARE(settings.value("window/x").toInt(), 10);
        QCOMPARE(settings.value("cameras/123/main_pane_expanded"), QVariant(false));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(file.readAll()).object()["window"].toObject()["x"].toInt(), 10);
    }

    void settingsPathIsThatOfOrganizationAndApplication()
    {
        const QSettings settings(jsonSettingsFormat(), QSettings::UserScope, "Morvane", "VESK");
        QVERIFY2(settings.fileName().endsWith("/Morvane/VESK.json"), qPrintable(settings.fileName()));
    }
};

QTEST_GUILESS_MAIN(TestJsonSettings)
#include "tst_json_settings.moc"
