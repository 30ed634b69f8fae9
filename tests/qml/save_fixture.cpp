#include "tests/qml/save_fixture.h"

#include "app/qml_object_list_model_base.h"
#include "app/vesk_app.h"
#include "save/save_job.h"
#include "save/save_manager.h"
#include "sim/camera.h"
#include "take/take.h"

#include <QDir>
#include <QFile>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace Qt::StringLiterals;

QStringList SaveFixture::files() const
{
    return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name);
}

QByteArray SaveFixture::contents(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void SaveFixture::startFolder()
{
    m_folder = std::make_unique<QTemporaryDir>();
    VeskApp::instance()->setSetting(u"save/folder"_s, m_folder->path());
}

Take *SaveFixture::startWithTake(int takeId, const q4sim::Config &config)
{
    startFolder();
    return startWithTakes(config) ? openTake(takeId) : nullptr;
}

Take *SaveFixture::startWithTake(int takeId)
{
    return startWithTake(takeId, {});
}

QQuickWindow *SaveFixture::saveDialog() const
{
    return dialog(u"Save"_s);
}

QQuickWindow *SaveFixture::openSave(int way, int takeId) const
{
    if (way == Button && !clickIn(u"Take"_s, u"Save..."_s))
        return nullptr;
    if (way == TabMenu && !click(u"Take %1"_s.arg(takeId), Qt::RightButton))
        return nullptr;
    if (way == FileMenu && !click(u"File"_s))
        return nullptr;
    QAccessibleInterface *entry = nullptr;
    if (way != Button && (!QTest::qWaitFor([&] {
            return (entry = element(u"Save..."_s, QAccessible::MenuItem)) != nullptr;
        }) || !ViewFixture::click(window(), entry)))
        return nullptr;
    if (!QTest::qWaitFor([&] { return saveDialog() != nullptr; }))
        return nullptr;
    return QTest::qWaitForWindowActive(saveDialog()) ? saveDialog() : nullptr;
}

QAccessibleInterface *SaveFixture::inDialog(const QString &name, QAccessible::Role role) const
{
    return saveDialog() ? element(saveDialog(), name, role) : nullptr;
}

QString SaveFixture::textOf(const QString &row) const
{
    QAccessibleInterface *found = inDialog(row, QAccessible::StaticText);
    return found ? found->text(QAccessible::Description) : u"no row "_s + row;
}

QString SaveFixture::typed(const QString &field) const
{
    QAccessibleInterface *found = inDialog(field, QAccessible::EditableText);
    return found ? found->object()->property("text").toString() : u"no field "_s + field;
}

bool SaveFixture::isEnabled(const QString &name, QAccessible::Role role) const
{
    QAccessibleInterface *found = inDialog(name, role);
    return found && found->object()->property("enabled").toBool();
}

QString SaveFixture::chosen(const QString &box) const
{
    QAccessibleInterface *found = inDialog(box, QAccessible::ComboBox);
    return found ? found->object()->property("displayText").toString() : u"no box "_s + box;
}

bool SaveFixture::pick(const QString &box, const QString &entry) const
{
    if (chosen(box) == entry)
        return true;
    QAccessibleInterface *row = nullptr;
    return ViewFixture::click(saveDialog(), inDialog(box, QAccessible::ComboBox)) &&
           QTest::qWaitFor([&] { return (row = inDialog(entry, QAccessible::MenuItem)) != nullptr; }) &&
           ViewFixture::click(saveDialog(), row) && QTest::qWaitFor([&] { return chosen(box) == entry; });
}

bool SaveFixture::typeInto(const QString &field, const QString &text, Qt::Key end) const
{
    if (!ViewFixture::click(saveDialog(), inDialog(field, QAccessible::EditableText)))
        return false;
    QTest::keySequence(saveDialog(), QKeySequence::SelectAll);
    QTest::keyClick(saveDialog(), Qt::Key_Delete);
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, saveDialog(), Qt::Key_unknown, character, Qt::NoModifier);
    if (end != Qt::Key_unknown)
        QTest::keyClick(saveDialog(), end);
    return true;
}

bool SaveFixture::press(const QString &name, QAccessible::Role role) const
{
    return ViewFixture::click(saveDialog(), inDialog(name, role));
}

SaveJob *SaveFixture::saveAs(const QString &name, const QString &format, const QString &which)
{
    const qsizetype before = jobs().size();
    if (!openSave() || (!which.isEmpty() && !press(which, QAccessible::RadioButton)) ||
        !typeInto(u"File Name"_s, name) || !pick(u"Format"_s, format) || !press(u"Save"_s))
        return nullptr;
    return QTest::qWaitFor([&] { return jobs().size() > before; }) ? jobs().last() : nullptr;
}

QList<SaveJob *> SaveFixture::jobs()
{
    QQmlObjectListModelBase *model = VeskApp::instance()->saveManager()->saveJobs();
    QList<SaveJob *> jobs;
    for (int i = 0; i < model->count(); ++i)
        jobs.append(qobject_cast<SaveJob *>(model->get(i)));
    return jobs;
}

QAccessibleInterface *SaveFixture::row(const QString &file) const
{
    return element(file, QAccessible::Row);
}

/** The visible element below another one. */
static QAccessibleInterface *below(QAccessibleInterface *parent, const QString &name, QAccessible::Role role)
{
    for (int i = 0; parent && i < parent->childCount(); ++i) {
        QAccessibleInterface *child = parent->child(i);
        if (!child || child->state().invisible)
            continue;
        if (child->role() == role && child->text(QAccessible::Name) == name)
            return child;
        if (QAccessibleInterface *found = below(child, name, role))
            return found;
    }
    return nullptr;
}

QString SaveFixture::cell(const QString &file, const QString &column) const
{
    QAccessibleInterface *found = below(row(file), column, QAccessible::StaticText);
    return found ? found->text(QAccessible::Description) : u"no cell "_s + column;
}

bool SaveFixture::hasRow(const QString &file) const
{
    return row(file) != nullptr;
}

bool SaveFixture::rowHas(const QString &file, const QString &button) const
{
    return below(row(file), button, QAccessible::Button) != nullptr;
}

bool SaveFixture::pressInRow(const QString &file, const QString &button) const
{
    QAccessibleInterface *target = nullptr;
    return QTest::qWaitFor(
               [&] { return (target = below(row(file), button, QAccessible::Button)) != nullptr; }) &&
           ViewFixture::click(window(), target);
}

QStringList SaveFixture::end()
{
    const QStringList warnings = TakeFixture::end();
    SaveManager *manager = VeskApp::instance()->saveManager();
    for (SaveJob *job : jobs()) {
        if (job->state() == SaveJob::Saving)
            job->cancel();
        manager->removeSaveJob(job);
    }
    VeskApp::instance()->settings()->remove(u"save"_s);
    m_folder.reset();
    return warnings;
}
