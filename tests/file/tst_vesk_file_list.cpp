#include "camera/vesk_value.h"
#include "file/vesk_file.h"
#include "tests/file/hand_made_file.h"
#include "tests/support/vesk_test_main.h"

#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace HandMade;

/** Native files in the list of sources: opened, selected and closed. */
class TestVeskFileList : public QObject
{
    Q_OBJECT

private:
    static VeskApp *app() { return VeskApp::instance(); }
    static VeskFile *fileAt(int row) { return qobject_cast<VeskFile *>(app()->veskObjModel()->get(row)); }

    std::unique_ptr<Folder> m_folder;

private slots:
    void init() { m_folder = std::make_unique<Folder>(); }

    void cleanup()
    {
        while (VeskFile *file = fileAt(0))
            file->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(app()->veskObjModel()->count(), 0);
        QCOMPARE(app()->findChildren<VeskFile *>().size(), 0);
    }

    void openedFileIsListedAndSelected()
    {
        const QString path = m_folder->write(usualRun(0, 3));
        const QString url = app()->fileUrlFromPath(path).toString();
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("VeskApp::openVeskFile\\(const QString ?&\\)"));
        QTest::ignoreMessage(QtDebugMsg, qPrintable('"' + url + '"'));
        QTest::ignoreMessage(QtDebugMsg, qPrintable("QUrl(\"" + url + "\")"));
        QTest::ignoreMessage(QtDebugMsg, qPrintable('"' + path + '"'));
        QSignalSpy selected(app(), &VeskApp::selectedVeskObjectChanged);
        app()->openVeskFile(url);
        QCOMPARE(app()->veskObjModel()->count(), 1);
        QVERIFY(fileAt(0));
        QCOMPARE(fileAt(0)->fileName(), path);
        QCOMPARE(app()->selectedVeskObject(), fileAt(0));
        QCOMPARE(selected.count(), 1);
        QVERIFY(!fileAt(0)->imgFrame()->image().isNull());
    }

    void fileIsSelectedWhateverWasBefore()
    {
        m_folder->write(usualRun(0, 3), "a.vesk");
        app()->openVeskFile("file:" + m_folder->path("a.vesk"));
        app()->openVeskFile("file:" + m_folder->path("a.vesk"));
        QCOMPARE(app()->veskObjModel()->count(), 2); // one file may be open twice
        QCOMPARE(app()->selectedVeskObject(), fileAt(1));
        QVERIFY(!fileAt(0)->selected());
    }

    void namesWithSpecialCharactersOpen_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blank") << "a take.vesk";
        QTest::newRow("number sign") << "take #3.vesk";
        QTest::newRow("per cent") << "100%25.vesk";
        QTest::newRow("question mark") << "which?.vesk";
        QTest::newRow("umlaut") << QStringLiteral("K\u00E4fer.vesk");
        QTest::newRow("no extension") << "take";
    }

    void namesWithSpecialCharactersOpen()
    {
        QFETCH(const QString, name);
        const QString path = m_folder->write(usualRun(0, 3), name);
        app()->openVeskFile(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)); // as a dialog tells it
        QVERIFY(fileAt(0));
        QCOMPARE(fileAt(0)->fileName(), path);
        app()->openVeskFile("file:" + path); // as the command line and a save do
        QVERIFY(fileAt(1));
        QCOMPARE(fileAt(1)->fileName(), path);
    }

    void encodedUrlWithoutHostOpens()
    {
        const QString path = m_folder->write(usualRun(0, 3), "a b.vesk");
        app()->openVeskFile("file:" + m_folder->path("a%20b.vesk"));
        QVERIFY(fileAt(0));
        QCOMPARE(fileAt(0)->fileName(), path);
    }

    void relativePathOpens()
    {
        m_folder->write(usualRun(0, 3));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder->path({})));
        app()->openVeskFile("file:a.vesk");
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(fileAt(0));
    }

    void fileThatDoesNotOpenChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("line");
        QTest::newRow("not there") << QByteArray() << "";
        QTest::newRow("foreign") << QByteArray("RIFF....WAVE") << "^unsupported vesk file$";
        QTest::newRow("damaged") << usualRun(0, 3).first(60) << "^[0-9A-F]+-VeskFile: json parse error: ";
    }

    void fileThatDoesNotOpenChangesNothing()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, line);
        app()->openVeskFile("file:" + m_folder->write(usualRun(0, 3)));
        VeskObject *const before = app()->selectedVeskObject();
        QVERIFY(before);
        const QString path = m_folder->path("b.vesk");
        if (!bytes.isEmpty())
            m_folder->write(bytes, "b.vesk");
        if (!line.isEmpty())
            QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(line));
        QTest::ignoreMessage(QtDebugMsg, qPrintable("error opening \"" + path + '"'));
        app()->openVeskFile("file:" + path);
        QCOMPARE(app()->veskObjModel()->count(), 1);
        QCOMPARE(app()->selectedVeskObject(), before);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(app()->findChildren<VeskFile *>().size(), 1);
    }

    void closedFileIsDeselectedThenRemovedAndDeleted()
    {
        app()->openVeskFile("file:" + m_folder->write(usualRun(0, 3)));
        const QPointer<VeskFile> file = fileAt(0);
        QStringList told;
        connect(file, &VeskObject::shouldBeUnselected, this, [&told] { told.append("unselect"); });
        connect(file, &VeskFile::closed, this, [&](VeskFile *closed) {
            told.append(closed == file && !file->isOpen() && !file->selected() ? "closed" : "wrong");
        });
        file->close();
        QCOMPARE(told.join(' '), "unselect closed");
        QCOMPARE(app()->selectedVeskObject(), nullptr);
        QCOMPARE(app()->backgroundView(), VeskApp::Empty);
        QCOMPARE(app()->veskObjModel()->count(), 0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(file.isNull());
    }

    void closeOfAnotherFileLeavesTheSelection()
    {
        const QString url = "file:" + m_folder->write(usualRun(0, 3));
        app()->openVeskFile(url);
        app()->openVeskFile(url);
        fileAt(0)->close();
        QCOMPARE(app()->veskObjModel()->count(), 1);
        QCOMPARE(app()->selectedVeskObject(), fileAt(0));
        QVERIFY(fileAt(0)->selected());
    }

    void fileThatIsClosedTwiceIsGoneOnce()
    {
        const QString url = "file:" + m_folder->write(usualRun(0, 3));
        app()->openVeskFile(url);
        app()->openVeskFile(url);
        VeskFile *const file = fileAt(1);
        file->close();
        file->close();
        QCOMPARE(app()->veskObjModel()->count(), 1);
        QCOMPARE(file->requestFrame(), -1);
    }

    void closedFileIsReleased()
    {
        app()->openVeskFile("file:" + m_folder->write(usualRun(0, 3)));
        const auto handles = [] {
            return QDir("/proc/self/fd").entryList(QDir::NoDotAndDotDot | QDir::AllEntries);
        };
        const auto held = handles().size();
        fileAt(0)->close();
        QCOMPARE(handles().size(), held - 1);
    }
};

VESK_TEST_MAIN(TestVeskFileList)
#include "tst_vesk_file_list.moc"
