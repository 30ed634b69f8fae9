#include "tests/qml/view_fixture.h"

#include "app/vesk_app.h"
#include "camera/camera.h"
#include "file/vesk_file.h"
#include "sim/camera.h"

#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

// Generated with the QML module Vesk: registers the classes for the views.
void qml_register_types_Vesk();

static QStringList collectedWarnings;
static QtMessageHandler previousHandler = nullptr;

static void collectWarning(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    // Lines of the engine carry the place in a document.
    if (type == QtWarningMsg && text.contains(".qml"_L1))
        collectedWarnings.append(text);
    previousHandler(type, context, text);
}

ViewFixture::ViewFixture()
{
    qml_register_types_Vesk();
}

ViewFixture::~ViewFixture()
{
    close();
}

void ViewFixture::createEngine()
{
    collectedWarnings.clear();
    // Here and not earlier, because a test that begins installs a handler of its own, which comes next now.
    previousHandler = qInstallMessageHandler(collectWarning);
    m_engine = std::make_unique<QQmlApplicationEngine>();
    VeskApp::instance()->set_networkAccessManager(m_engine->networkAccessManager());
    m_engine->rootContext()->setContextProperty(u"veskApp"_s, VeskApp::instance());
}

void ViewFixture::openDocument(const QByteArray &document, const QString &property, const QVariant &value)
{
    createEngine();
    m_engine->setInitialProperties({{property, value}});
    m_engine->loadData(document, QUrl(u"qrc:/test_document.qml"_s));
    QVERIFY(window());
    QVERIFY(QTest::qWaitForWindowExposed(window()));
}

void ViewFixture::open()
{
    createEngine();
    m_engine->load(QUrl(u"qrc:/main.qml"_s));
    QVERIFY(window());
    QVERIFY(QTest::qWaitForWindowExposed(window()));
}

void ViewFixture::close()
{
    if (!m_engine)
        return;
    const QList<VeskObject *> sources = VeskApp::instance()->veskObjects();
    for (VeskObject *source : sources) {
        if (auto *camera = qobject_cast<Camera *>(source))
            camera->disconnectCamera();
        else if (auto *file = qobject_cast<VeskFile *>(source))
            file->close();
    }
    // What goes may leave what it holds to be deleted, too; nothing may outlive the engine.
    for (int i = 0; i < 4; ++i)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_engine.reset();
    qInstallMessageHandler(previousHandler);
    qDeleteAll(std::exchange(m_simulated, {}));
}

QStringList ViewFixture::warnings() const
{
    return collectedWarnings;
}

QStringList ViewFixture::end()
{
    close();
    VeskApp::instance()->settings()->remove(u"cameras"_s);
    VeskApp::instance()->settings()->remove(u"color_adj_pane_expanded"_s);
    return warnings();
}

QByteArrayList ViewFixture::bodies(const q4sim::Camera &camera, const QByteArray &method, const QString &path)
{
    QByteArrayList found;
    const QList<q4sim::Request> requests = camera.requests(method, path);
    for (const q4sim::Request &request : requests)
        found.append(request.body);
    return found;
}

QStringList ViewFixture::writtenPaths(const q4sim::Camera &camera)
{
    QStringList found;
    const QList<q4sim::Request> requests = camera.requests();
    for (const q4sim::Request &request : requests) {
        if (request.method == "PUT" && request.path != "/meta/time"_L1)
            found.append(request.path);
    }
    return found;
}

q4sim::Camera *ViewFixture::simulate(const q4sim::Config &config)
{
    auto camera = std::make_unique<q4sim::Camera>(config);
    const QString problem = camera->listen();
    if (!problem.isEmpty()) {
        qWarning() << problem;
        return nullptr;
    }
    m_simulated.append(camera.release());
    return m_simulated.last();
}

QString ViewFixture::address(int n)
{
    bool given = false;
    const int net = qEnvironmentVariableIntValue("VESK_VIEW_TEST_NET", &given);
    return u"127.0.%1.%2"_s.arg(given ? net : 15).arg(n);
}

Camera *ViewFixture::connectTo(const QString &address)
{
    VeskApp::instance()->connectCamera(address);
    auto *camera = qobject_cast<Camera *>(VeskApp::instance()->veskObjects().last());
    return QTest::qWaitFor([camera] { return camera->connected(); }) ? camera : nullptr;
}

q4sim::Camera *ViewFixture::startWithCamera(q4sim::Config config)
{
    config.address = QHostAddress(address(1));
    config.discovery = false;
    q4sim::Camera *simulated = simulate(config);
    if (!simulated)
        return nullptr;
    open();
    m_camera = connectTo(address(1));
    return m_camera ? simulated : nullptr;
}

q4sim::Camera *ViewFixture::startWithCamera()
{
    return startWithCamera({});
}

q4sim::Camera *ViewFixture::startUnfolded(const q4sim::Config &config)
{
    const QStringList keys = {u"fw"_s,  u"trigger"_s, u"io1"_s, u"io2"_s,
                              u"io3"_s, u"io4"_s,     u"io5"_s, u"io6"_s};
    for (const QString &key : keys)
        VeskApp::instance()->setSetting(u"cameras/%1/%2_pane_expanded"_s.arg(config.serial, key), true);
    VeskApp::instance()->setSetting(u"color_adj_pane_expanded"_s, true);
    return startWithCamera(config);
}

q4sim::Camera *ViewFixture::startUnfolded()
{
    return startUnfolded({});
}

bool ViewFixture::waitForPolls(int count) const
{
    QSignalSpy polled(m_camera, &Camera::valuesPolled);
    return QTest::qWaitFor([&] { return polled.size() >= count; });
}

QQuickWindow *ViewFixture::window() const
{
    return m_engine->rootObjects().isEmpty() ? nullptr
                                             : qobject_cast<QQuickWindow *>(m_engine->rootObjects().first());
}

QQuickWindow *ViewFixture::dialog(const QString &title) const
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow *candidate : windows) {
        if (candidate != window() && candidate->isVisible() && candidate->title() == title)
            return qobject_cast<QQuickWindow *>(candidate);
    }
    return nullptr;
}

static QAccessibleInterface *findElement(QAccessibleInterface *parent, const QString &name,
                                         QAccessible::Role role)
{
    for (int i = 0; parent && i < parent->childCount(); ++i) {
        QAccessibleInterface *child = parent->child(i);
        if (!child || child->state().invisible)
            continue;
        if (child->text(QAccessible::Name) == name && (role == QAccessible::NoRole || child->role() == role))
            return child;
        if (QAccessibleInterface *found = findElement(child, name, role))
            return found;
    }
    return nullptr;
}

QAccessibleInterface *ViewFixture::element(QWindow *window, const QString &name, QAccessible::Role role)
{
    // Without a display nothing else tells the controls that somebody reads them; they answer at once.
    QAccessible::setActive(true);
    return findElement(QAccessible::queryAccessibleInterface(window), name, role);
}

QAccessibleInterface *ViewFixture::element(const QString &name, QAccessible::Role role) const
{
    return element(window(), name, role);
}

bool ViewFixture::shows(const QString &name, QAccessible::Role role) const
{
    return element(name, role) != nullptr;
}

QString ViewFixture::rowText(const QString &label) const
{
    QAccessibleInterface *row = element(label, QAccessible::StaticText);
    return row ? row->text(QAccessible::Description) : u"no row "_s + label;
}

QAccessibleInterface *ViewFixture::inSection(const QString &section, const QString &name,
                                             QAccessible::Role role) const
{
    return findElement(element(section, QAccessible::Grouping), name, role);
}

bool ViewFixture::clickIn(const QString &section, const QString &name) const
{
    QAccessibleInterface *target = nullptr;
    return QTest::qWaitFor([&] { return (target = inSection(section, name)) != nullptr; }) &&
           click(window(), target);
}

QString ViewFixture::rowText(const QString &section, const QString &label) const
{
    QAccessibleInterface *row = inSection(section, label, QAccessible::StaticText);
    return row ? row->text(QAccessible::Description) : u"no row "_s + label;
}

static QString propertyOf(QAccessibleInterface *element, const char *name)
{
    return element ? element->object()->property(name).toString() : u"not there"_s;
}

QString ViewFixture::choice(const QString &section, const QString &label) const
{
    return propertyOf(inSection(section, label, QAccessible::ComboBox), "displayText");
}

bool ViewFixture::openList(const QString &section, const QString &label) const
{
    QAccessibleInterface *box = inSection(section, label, QAccessible::ComboBox);
    if (!box)
        return false;
    settle(window());
    reveal(box);
    settle(window());
    // At the arrow: elsewhere a box may have a field.
    const QPoint arrow(centre(window(), box).x() + box->rect().width() / 2 - 8, centre(window(), box).y());
    QTest::mouseClick(window(), Qt::LeftButton, {}, arrow);
    return true;
}

bool ViewFixture::choose(const QString &section, const QString &label, const QString &entry) const
{
    QAccessibleInterface *row = nullptr;
    return openList(section, label) &&
           QTest::qWaitFor([&] { return (row = element(entry, QAccessible::MenuItem)) != nullptr; }) &&
           click(window(), row);
}

static QQuickItem *textInputBelow(QQuickItem *item)
{
    if (!item || item->inherits("QQuickTextInput"))
        return item;
    const QList<QQuickItem *> children = item->childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *found = textInputBelow(child))
            return found;
    }
    return nullptr;
}

QQuickItem *ViewFixture::field(const QString &section, const QString &label) const
{
    for (const QAccessible::Role role :
         {QAccessible::ComboBox, QAccessible::EditableText, QAccessible::SpinBox}) {
        if (QAccessibleInterface *found = inSection(section, label, role))
            return textInputBelow(qobject_cast<QQuickItem *>(found->object()));
    }
    return nullptr;
}

QString ViewFixture::fieldText(const QString &section, const QString &label) const
{
    QQuickItem *input = field(section, label);
    return input ? input->property("text").toString() : u"no field "_s + label;
}

bool ViewFixture::type(const QString &section, const QString &label, const QString &text, Qt::Key end) const
{
    QQuickItem *input = field(section, label);
    // The input of a spin box is no element of its own.
    QAccessibleInterface *target = input ? QAccessible::queryAccessibleInterface(input) : nullptr;
    if (input && !target)
        target = inSection(section, label, QAccessible::SpinBox);
    if (!target || !click(window(), target))
        return false;
    QTest::keySequence(window(), QKeySequence::SelectAll);
    QTest::keyClick(window(), Qt::Key_Delete);
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, window(), Qt::Key_unknown, character, Qt::NoModifier);
    QTest::keyClick(window(), end);
    return true;
}

bool ViewFixture::drag(const QString &section, const QString &label, double from, double to,
                       int milliseconds) const
{
    QAccessibleInterface *slider = inSection(section, label, QAccessible::Slider);
    if (!slider)
        return false;
    settle(window());
    reveal(slider);
    settle(window());
    const QRect place(window()->mapFromGlobal(slider->rect().topLeft()), slider->rect().size());
    const auto pointAt = [&](double position) {
        const double handle = slider->object()->property("handle").value<QQuickItem *>()->width();
        return QPoint(qRound(place.left() + handle / 2 + (place.width() - handle) * position),
                      place.center().y());
    };
    QTest::mousePress(window(), Qt::LeftButton, {}, pointAt(from));
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < milliseconds) {
        const double part = double(time.elapsed()) / milliseconds;
        QTest::mouseMove(window(), pointAt(from + (to - from) * part));
        QTest::qWait(10);
    }
    QTest::mouseMove(window(), pointAt(to));
    QTest::mouseRelease(window(), Qt::LeftButton, {}, pointAt(to));
    return true;
}
