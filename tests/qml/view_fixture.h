#pragma once

#include <QAccessible>
#include <QObject>
#include <QPoint>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace q4sim
{
class Camera;
struct Config;
} // namespace q4sim
class Camera;
class QQmlApplicationEngine;
class QQuickItem;
class QQuickWindow;

/**
 * The program's window without a display, driven by mouse and keys and read through the accessibility tree.
 * Every warning of the QML engine is collected: a test ends with none.
 */
class ViewFixture : public QObject
{
    Q_OBJECT

public:
    ViewFixture();
    ~ViewFixture() override;

    /** Loads the root document. */
    void open();
    /** Loads a document whose root is a window, with one of its properties set. */
    void openDocument(const QByteArray &document, const QString &property, const QVariant &value);
    /** Ends the window, and what was simulated. */
    void close();
    QStringList warnings() const;
    /** Closes, forgets what was kept with cameras, and gives the warnings: what a test ends with. */
    QStringList end();

    /** A simulated camera that listens at the configured address, null with a warning if it cannot. */
    q4sim::Camera *simulate(const q4sim::Config &config);
    /** Bodies of the requests that a simulated camera received, oldest first. */
    static QByteArrayList bodies(const q4sim::Camera &camera, const QByteArray &method, const QString &path);
    /** Paths that were written to it, but for its time, which every connection writes. */
    static QStringList writtenPaths(const q4sim::Camera &camera);
    /** The n-th address of this test's simulated cameras; the first is that of startWithCamera. */
    static QString address(int n);
    /** Connects the program to the address and waits until it is connected. */
    Camera *connectTo(const QString &address);

    /** Opens the window with one simulated camera that is connected and selected; null if that fails. */
    q4sim::Camera *startWithCamera(q4sim::Config config);
    q4sim::Camera *startWithCamera();
    /** startWithCamera, with every section of the control bar unfolded. */
    q4sim::Camera *startUnfolded(const q4sim::Config &config);
    q4sim::Camera *startUnfolded();
    /** The camera of startWithCamera, and what it is connected to. */
    Camera *camera() const { return m_camera; }
    q4sim::Camera *simulated() const { return m_simulated.value(0); }
    /** Lets the program read the camera a number of times; two are longer than a write waits to be sent. */
    bool waitForPolls(int count) const;

    QQuickWindow *window() const;
    /** The open window with a title, null if there is none. */
    QQuickWindow *dialog(const QString &title) const;

    /** The visible element with a name and, unless NoRole, a role. */
    static QAccessibleInterface *element(QWindow *window, const QString &name,
                                         QAccessible::Role role = QAccessible::NoRole);
    QAccessibleInterface *element(const QString &name, QAccessible::Role role = QAccessible::NoRole) const;
    bool shows(const QString &name, QAccessible::Role role = QAccessible::NoRole) const;
    /** What a row of the control bar tells. */
    QString rowText(const QString &label) const;

    // The same label may stand in several sections of the control bar.
    QAccessibleInterface *inSection(const QString &section, const QString &name,
                                    QAccessible::Role role = QAccessible::NoRole) const;
    bool clickIn(const QString &section, const QString &name) const;
    QString rowText(const QString &section, const QString &label) const;
    /** What a box without a field shows. */
    QString choice(const QString &section, const QString &label) const;
    /** Clicks the arrow of a box. */
    bool openList(const QString &section, const QString &label) const;
    /** What the open menu on the tab of a recording or native file offers; closes it. */
    void checkTabMenu() const;
    /** Clicks one of the arrows of a box of numbers. */
    bool clickArrow(const QString &section, const QString &label, bool up) const;
    /** Opens the box and clicks an entry. */
    bool choose(const QString &section, const QString &label, const QString &entry) const;
    /** The text input of a field, or of a box that has one. */
    QQuickItem *field(const QString &section, const QString &label) const;
    QString fieldText(const QString &section, const QString &label) const;
    /** Clicks into the field, replaces its text key by key and ends with a key. */
    bool type(const QString &section, const QString &label, const QString &text,
              Qt::Key end = Qt::Key_Return) const;

    /** Drags a slider from one place to another, 0 to 1 of its groove, with pointer moves 10 ms apart. */
    bool drag(const QString &section, const QString &label, double from, double to, int milliseconds) const;

    /** Waits until everything stands where it belongs. */
    static void settle(QWindow *window);
    static QPoint centre(QWindow *window, QAccessibleInterface *element);
    static void reveal(QAccessibleInterface *element);
    /** Clicks the element in its middle; false if it is not there, or cannot be brought into the window. */
    static bool click(QWindow *window, QAccessibleInterface *element,
                      Qt::MouseButton button = Qt::LeftButton);
    static bool click(QWindow *window, const QString &name, Qt::MouseButton button = Qt::LeftButton);
    bool click(const QString &name, Qt::MouseButton button = Qt::LeftButton) const;

    /** The visible item below parent that shows a text, for glyphs, which have no name. */
    static QQuickItem *itemWithText(QQuickItem *parent, const QString &text);
    QQuickItem *itemWithText(const QString &text) const;
    bool showsTooltip(const QString &text) const;
    static bool showsTooltip(QQuickWindow *window, const QString &text);

    /** Waits until a menu that opens shows an entry. */
    bool offers(const QString &entry) const;
    /** The texts of the open menu that has an entry, in their order; "-" for a separator. */
    QStringList menuWith(const QString &entry) const;

    // Where no desktop offers a dialog for files, one is drawn in a window of its own. Another dialog that is
    // open besides is not taken for it.
    /** Its window, null while there is none. */
    QQuickWindow *drawnDialog(const QWindow *besides = nullptr) const;
    /** Waits until it shows a text, and clicks on that. */
    bool clickInDrawn(const QString &text, const QWindow *besides = nullptr) const;

private:
    void createEngine();

    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QList<q4sim::Camera *> m_simulated;
    Camera *m_camera = nullptr;
};
