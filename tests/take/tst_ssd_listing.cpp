#include "camera/camera.h"
#include "take/ssd_ls_entry.h"
#include "take/ssd_ls_list_model.h"
#include "take/ssd_ls_sort_proxy_model.h"
#include "tests/support/end_requests.h"
#include "tests/support/http_recorder.h"
#include "tests/support/vesk_test_main.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSignalSpy>

#include <limits>
#include <memory>

using namespace Qt::StringLiterals;
using Status = QHttpServerResponder::StatusCode;

/** The listing of a camera's drive: what becomes of the camera's answer, selection and order. */
class TestSsdListing : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<HttpRecorder> m_server;
    std::unique_ptr<Camera> m_camera;

    SsdLsListModel *list() const
    {
        return qobject_cast<SsdLsListModel *>(m_camera->ssdLsEntries()->sourceModel());
    }
    SsdLsEntry *entry(int row) const { return list()->items().at(row); }

    void answer(const QByteArray &body, Status status = Status::Ok)
    {
        m_server->setAnswer([=](const auto &) { return HttpRecorder::Reply{body, {}, status}; });
    }

    /** Lists, and has worked through the answer. */
    void listDrive(const QByteArray &body, Status status = Status::Ok)
    {
        answer(body, status);
        m_camera->ssdLs();
        const QNetworkReply *reply = newestReply();
        QVERIFY(reply);
        QSignalSpy gone(reply, &QObject::destroyed);
        QTRY_COMPARE(gone.count(), 1);
    }

    static const QNetworkReply *newestReply()
    {
        const auto replies = VeskApp::instance()->networkAccessManager()->findChildren<QNetworkReply *>();
        return replies.isEmpty() ? nullptr : replies.last();
    }

    QStringList names() const
    {
        QStringList names;
        for (const SsdLsEntry *one : list()->items())
            names.append(one->name());
        return names;
    }

    QStringList shownNames() const
    {
        QStringList names;
        const auto *shown = m_camera->ssdLsEntries();
        for (int row = 0; row < shown->rowCount(); ++row)
            names.append(shown->index(row, 0).data(shown->roleNames().key("name")).toString());
        return names;
    }

    void listThree()
    {
        listDrive(R"({"ssd-ls":["a","b","c"]})");
        QCOMPARE(list()->size(), 3);
    }

private slots:
    void init()
    {
        m_server = std::make_unique<HttpRecorder>("127.0.2.24");
        QVERIFY(m_server->isListening());
        m_camera = std::make_unique<Camera>(QHostAddress("127.0.2.24"), nullptr);
    }

    void cleanup()
    {
        m_camera.reset();
        m_server.reset();
        endRequests();
    }

    void requestAsksForTheLongForm()
    {
        listDrive(R"({"ssd-ls":[]})");
        const auto sent = m_server->requests("POST", "/ssd-ls");
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent[0].body, QByteArray("{\"long\": 1}"));
        QCOMPARE(sent[0].headers.value("User-Agent").toByteArray(), QByteArray("Vesk 1.0"));
        QCOMPARE(sent[0].headers.value("Content-Type").toByteArray(), QByteArray("application/json"));
    }

    void objectsBecomeEntries()
    {
        listDrive(R"({"ssd-ls":[{"name":"b","size":1234567890123.9,"time":1700000000.7},{"size":5}]})");
        QCOMPARE(list()->size(), 2);
        QCOMPARE(entry(0)->entryId(), 0);
        QCOMPARE(entry(0)->name(), u"b"_s);
        QCOMPARE(entry(0)->size(), 1234567890123LL);
        QCOMPARE(entry(0)->date(), QDateTime(QDate(2023, 11, 14), QTime(22, 13, 20), QTimeZone::UTC));
        QCOMPARE(entry(0)->date().timeSpec(), Qt::LocalTime);
        QVERIFY(!entry(0)->oldFW());
        QVERIFY(!entry(0)->selected());
        QCOMPARE(entry(1)->entryId(), 1);
        QCOMPARE(entry(1)->name(), QString());
        QCOMPARE(entry(1)->size(), 5);
        QCOMPARE(entry(1)->date().toSecsSinceEpoch(), 0);
    }

    void stringsBecomeEntriesOfOldFirmware()
    {
        listDrive(R"({"ssd-ls":["a","b"]})");
        QCOMPARE(names(), QStringList({u"a"_s, u"b"_s}));
        for (int row = 0; row < 2; ++row) {
            QCOMPARE(entry(row)->entryId(), row);
            QVERIFY(entry(row)->oldFW());
            QCOMPARE(entry(row)->size(), 0);
            QCOMPARE(entry(row)->date().toSecsSinceEpoch(), 0);
        }
    }

    void otherElementsTakeNoNumber()
    {
        listDrive(R"({"ssd-ls":["a",7,null,true,["x"],"b",{"name":"c"}]})");
        QCOMPARE(names(), QStringList({u"a"_s, u"b"_s, u"c"_s}));
        for (int row = 0; row < 3; ++row)
            QCOMPARE(entry(row)->entryId(), row);
    }

    void numbersBeyondTheScaleStopAtItsEnds_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<qlonglong>("size");
        QTest::newRow("large") << QByteArray("1e300") << std::numeric_limits<qlonglong>::max();
        QTest::newRow("negative") << QByteArray("-1e300") << std::numeric_limits<qlonglong>::min();
        QTest::newRow("2^63") << QByteArray("9223372036854775808") << std::numeric_limits<qlonglong>::max();
        QTest::newRow("cut towards 0") << QByteArray("-1.9") << -1LL;
        QTest::newRow("text") << QByteArray("\"12\"") << 0LL;
    }

    void numbersBeyondTheScaleStopAtItsEnds()
    {
        QFETCH(QByteArray, number);
        QFETCH(qlonglong, size);
        listDrive(R"({"ssd-ls":[{"name":"a","size":)" + number + R"(,"time":)" + number + "}]}");
        QCOMPARE(entry(0)->size(), size);
        QVERIFY(entry(0)->dateStr().isEmpty() || entry(0)->date().isValid());
    }

    void namesArriveAsTheyStand_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("quotes") << u"a \"b\" 'c'.vesk"_s;
        QTest::newRow("slashes") << u"a/b\\c.vesk"_s;
        QTest::newRow("blanks") << u"  a  b .vesk "_s;
        QTest::newRow("255 bytes") << QString(250, u'x') + u".vesk"_s;
        QTest::newRow("Japanese") << u"衝突試験 七.vesk"_s;
        QTest::newRow("Arabic") << u"اختبار.vesk"_s;
        QTest::newRow("beyond the first plane") << QString::fromUcs4(U"\U0001F3A5.vesk");
        QTest::newRow("markup") << u"<b>%1</b>&amp;.vesk"_s;
    }

    void namesArriveAsTheyStand()
    {
        QFETCH(QString, name);
        listDrive(
            QJsonDocument(QJsonObject{{"ssd-ls", QJsonArray{QJsonObject{{"name", name}}, name}}}).toJson());
        QCOMPARE(names(), QStringList({name, name}));
        QCOMPARE(shownNames(), QStringList({name, name}));
    }

    void dateOfOldFirmwareIsARealText()
    {
        const SsdLsEntry old(0, u"a"_s, 0, 0, true, nullptr);
        QCOMPARE(old.dateStr(), QDateTime::fromSecsSinceEpoch(0).toString(u"yyyy-MM-dd HH:mm:ss"_s));
        QVERIFY(QRegularExpression(u"^19(69|70)-\\d\\d-\\d\\d \\d\\d:\\d\\d:00$"_s)
                    .match(old.dateStr())
                    .hasMatch());
    }

    void rolesAreThePropertiesOfAnEntry()
    {
        const QList<QByteArray> roles = list()->roleNames().values();
        for (const char *name :
             {"entryId", "selected", "name", "size", "date", "dateStr", "oldFW", "qtObject"})
            QVERIFY2(roles.contains(name), name);
    }

    void selectionOfOneUnselectsTheOthers()
    {
        listThree();
        entry(1)->select(false);
        QSignalSpy counted(list(), &SsdLsListModel::selectedCountChanged);
        QSignalSpy selected(entry(2), &SsdLsEntry::selectedChanged);
        QSignalSpy unselected(entry(1), &SsdLsEntry::selectedChanged);
        entry(2)->select(false);
        QVERIFY(!entry(1)->selected());
        QVERIFY(entry(2)->selected());
        QCOMPARE(list()->selectedCount(), 1);
        QCOMPARE(m_camera->ssdLsEntries()->selectedCount(), 1);
        QVERIFY(counted.count() > 0);
        QCOMPARE(selected.count(), 1);
        QCOMPARE(unselected.count(), 1);
    }

    void selectionOfSeveralKeepsTheOthers()
    {
        listThree();
        entry(0)->select(true);
        entry(2)->select(true);
        QCOMPARE(list()->selectedCount(), 2);
        QCOMPARE(list()->firstSelected(), entry(0));
    }

    void selectedEntryIsLeftAlone()
    {
        listThree();
        entry(0)->select(true);
        entry(2)->select(true);
        QSignalSpy counted(list(), &SsdLsListModel::selectedCountChanged);
        entry(2)->select(false);
        QCOMPARE(list()->selectedCount(), 2);
        QCOMPARE(counted.count(), 0);
    }

    void unselectionTellsOnce()
    {
        listThree();
        entry(1)->select(false);
        QSignalSpy counted(list(), &SsdLsListModel::selectedCountChanged);
        entry(1)->unselect();
        entry(1)->unselect();
        QCOMPARE(counted.count(), 1);
        QCOMPARE(list()->selectedCount(), 0);
        QCOMPARE(list()->firstSelected(), nullptr);
    }

    void appendedEntryTakesPart()
    {
        listThree();
        auto *added = new SsdLsEntry(3, u"d"_s, 0, 0, false, m_camera.get());
        list()->append(added);
        added->select(true);
        QCOMPARE(list()->firstSelected(), added);
        entry(0)->select(false);
        QVERIFY(!added->selected());
        list()->append(nullptr);
        QCOMPARE(list()->size(), 4);
    }

    void clearingTellsOfAnEmptyListToo()
    {
        QSignalSpy counted(list(), &SsdLsListModel::selectedCountChanged);
        list()->clear();
        QCOMPARE(counted.count(), 1);
    }

    void selectionDoesNotOutliveARefill()
    {
        listThree();
        SsdLsEntry *former = entry(1);
        former->select(false);
        listThree();
        QCOMPARE(list()->selectedCount(), 0);
        // It lives on with the camera, and is nothing to the list any more.
        QCOMPARE(former->parent(), m_camera.get());
        QSignalSpy counted(list(), &SsdLsListModel::selectedCountChanged);
        former->unselect();
        former->select(false);
        QCOMPARE(counted.count(), 0);
    }

    void unusableAnswer_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<Status>("status");
        QTest::addColumn<bool>("kept");
        QTest::addColumn<QString>("line");
        const QByteArray refusal = R"({"error":"the drive is not ready"})";
        QTest::newRow("no JSON") << QByteArray("this is {no} JSON") << Status::Ok << true
                                 << u": json parse error: illegal value"_s;
        QTest::newRow("empty") << QByteArray() << Status::Ok << true
                               << u": json parse error: illegal value"_s;
        QTest::newRow("error without JSON") << QByteArray("x") << Status::InternalServerError << true
                                            << u": json parse error: illegal value"_s;
        QTest::newRow("refusal") << refusal << Status::Conflict << false << u"ssdLsFinished error"_s;
        QTest::newRow("server error")
            << refusal << Status::InternalServerError << false << u"ssdLsFinished error"_s;
        QTest::newRow("other JSON") << QByteArray("[1]") << Status::Ok << false << QString();
        QTest::newRow("no list") << QByteArray(R"({"ssd-ls":"a"})") << Status::Ok << false << QString();
    }

    void unusableAnswer()
    {
        QFETCH(QByteArray, body);
        QFETCH(Status, status);
        QFETCH(bool, kept);
        QFETCH(QString, line);
        listThree();
        if (line.startsWith(u':'))
            QTest::ignoreMessage(QtCriticalMsg, qPrintable(m_camera->objectName() + line));
        else if (!line.isEmpty())
            QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
        listDrive(body, status);
        QCOMPARE(list()->size(), kept ? 3 : 0);
    }

    void cameraWithoutAnAnswerKeepsTheList()
    {
        listThree();
        m_server->setHold([](const auto &) { return true; });
        m_camera->ssdLs();
        QTRY_COMPARE(m_server->heldCount(), 1);
        QCOMPARE(list()->size(), 3);
        // The camera may go meanwhile.
        m_camera.reset();
        m_server->release();
        QTRY_VERIFY(!newestReply());
    }

    void order_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("expected");
        using Proxy = SsdLsSortProxyModel;
        // Names b C a d; sizes 2 1 2 1; times 30 10 20 20.
        QTest::newRow("names up") << int(Proxy::NameSortAscending) << u"abCd"_s;
        QTest::newRow("names down") << int(Proxy::NameSortDescending) << u"dCba"_s;
        QTest::newRow("sizes up") << int(Proxy::SizeSortAscending) << u"Cdab"_s;
        QTest::newRow("sizes down") << int(Proxy::SizeSortDescending) << u"abCd"_s;
        QTest::newRow("dates up") << int(Proxy::DateSortAscending) << u"Cadb"_s;
        QTest::newRow("dates down") << int(Proxy::DateSortDescending) << u"badC"_s;
    }

    void order()
    {
        QFETCH(int, mode);
        QFETCH(QString, expected);
        const QAbstractItemModelTester tester(m_camera->ssdLsEntries());
        listDrive(R"({"ssd-ls":[{"name":"b","size":2,"time":30},{"name":"C","size":1,"time":10},
                                {"name":"a","size":2,"time":20},{"name":"d","size":1,"time":20}]})");
        QCOMPARE(m_camera->ssdLsEntries()->sortMode(), int(SsdLsSortProxyModel::NameSortAscending));
        m_camera->ssdLsEntries()->setSortMode(mode);
        QCOMPARE(shownNames().join(QString()), expected);
        // A refill comes in the chosen order.
        listDrive(R"({"ssd-ls":[{"name":"d","size":1,"time":20},{"name":"C","size":1,"time":10},
                                {"name":"a","size":2,"time":20},{"name":"b","size":2,"time":30}]})");
        QCOMPARE(shownNames().join(QString()), expected);
    }

    void oldFirmwareStandsByName_data()
    {
        QTest::addColumn<int>("mode");
        for (int mode = SsdLsSortProxyModel::SizeSortAscending;
             mode <= SsdLsSortProxyModel::DateSortDescending; ++mode)
            QTest::addRow("mode %d", mode) << mode;
    }

    void oldFirmwareStandsByName()
    {
        QFETCH(int, mode);
        m_camera->ssdLsEntries()->setSortMode(mode);
        listDrive(R"({"ssd-ls":["b","C","a"]})");
        QCOMPARE(shownNames().join(QString()), u"abC"_s);
    }

    void modeTellsOnlyAChange()
    {
        QSignalSpy changed(m_camera->ssdLsEntries(), &SsdLsSortProxyModel::sortModeChanged);
        m_camera->ssdLsEntries()->setSortMode(SsdLsSortProxyModel::NameSortAscending);
        QCOMPARE(changed.count(), 0);
        m_camera->ssdLsEntries()->setSortMode(SsdLsSortProxyModel::DateSortDescending);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_camera->ssdLsEntries()->sortColumn(), 0);
        QCOMPARE(m_camera->ssdLsEntries()->sortOrder(), Qt::AscendingOrder);
    }

    void noOrderShowsAll()
    {
        listThree();
        m_camera->ssdLsEntries()->setSortMode(SsdLsSortProxyModel::NoSort);
        QStringList shown = shownNames();
        shown.sort();
        QCOMPARE(shown, QStringList({u"a"_s, u"b"_s, u"c"_s}));
    }

    void selectionIsInTheOrderOfTheListNotOfTheView()
    {
        listThree();
        m_camera->ssdLsEntries()->setSortMode(SsdLsSortProxyModel::NameSortDescending);
        entry(2)->select(true);
        entry(1)->select(true);
        QCOMPARE(list()->firstSelected()->name(), u"b"_s);
    }
};

VESK_TEST_MAIN(TestSsdListing)
#include "tst_ssd_listing.moc"
