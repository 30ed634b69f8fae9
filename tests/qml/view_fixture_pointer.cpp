#include "tests/qml/view_fixture.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

QPoint ViewFixture::centre(QWindow *window, QAccessibleInterface *element)
{
    return window->mapFromGlobal(element->rect().center());
}

void ViewFixture::settle(QWindow *window)
{
    auto *quickWindow = qobject_cast<QQuickWindow *>(window);
    QSignalSpy swapped(quickWindow, &QQuickWindow::frameSwapped);
    quickWindow->update();
    swapped.wait();
}

/** Scrolls the element to where it can be seen, as the user would with the wheel. */
void ViewFixture::reveal(QAccessibleInterface *element)
{
    auto *item = qobject_cast<QQuickItem *>(element->object());
    for (QQuickItem *view = item; view; view = view->parentItem()) {
        if (!view->inherits("QQuickFlickable"))
            continue;
        auto *content = view->property("contentItem").value<QQuickItem *>();
        const QRectF place = item->mapRectToItem(content, QRectF({}, item->size()));
        const qreal top = view->property("contentY").toReal();
        if (place.top() < top || place.bottom() > top + view->height())
            view->setProperty("contentY", std::max(0.0, place.center().y() - view->height() / 2));
    }
}

bool ViewFixture::click(QWindow *window, QAccessibleInterface *target, Qt::MouseButton button)
{
    // What is to be clicked may go meanwhile, and the element with it.
    const QPointer<QObject> object = target->object();
    settle(window);
    if (object)
        reveal(target);
    settle(window);
    // A list that opens moves its entries until it has its place.
    QPoint point = object ? centre(window, target) : QPoint();
    for (int frame = 0; frame < 20; ++frame) {
        settle(window);
        if (!object)
            return false;
        const QPoint now = centre(window, target);
        if (std::exchange(point, now) == now)
            break;
    }
    if (!QRect({}, window->size()).contains(point))
        return false;
    QTest::mouseMove(window, point);
    QTest::mouseClick(window, button, {}, point);
    return true;
}

bool ViewFixture::click(QWindow *window, const QString &name, Qt::MouseButton button)
{
    QAccessibleInterface *target = nullptr;
    return QTest::qWaitFor([&] { return (target = element(window, name)) != nullptr; }) &&
           click(window, target, button);
}

bool ViewFixture::click(const QString &name, Qt::MouseButton button) const
{
    return click(window(), name, button);
}

QQuickItem *ViewFixture::itemWithText(QQuickItem *parent, const QString &text)
{
    const QList<QQuickItem *> children = parent->childItems();
    for (QQuickItem *child : children) {
        if (!child->isVisible())
            continue;
        if (child->property("text").toString() == text && child->property("color").isValid())
            return child;
        if (QQuickItem *found = itemWithText(child, text))
            return found;
    }
    return nullptr;
}

bool ViewFixture::showsTooltip(const QString &text) const
{
    return showsTooltip(window(), text);
}

bool ViewFixture::showsTooltip(QQuickWindow *window, const QString &text)
{
    const QList<QQuickItem *> layers = window->contentItem()->childItems();
    return std::any_of(layers.begin(), layers.end(), [&](QQuickItem *layer) {
        return layer->inherits("QQuickOverlay") && itemWithText(layer, text);
    });
}

QQuickItem *ViewFixture::itemWithText(const QString &text) const
{
    return itemWithText(window()->contentItem(), text);
}

bool ViewFixture::offers(const QString &entry) const
{
    return QTest::qWaitFor([&] { return element(entry, QAccessible::MenuItem) != nullptr; });
}

QStringList ViewFixture::menuWith(const QString &entry) const
{
    QStringList texts;
    const QAccessibleInterface *found = element(entry, QAccessible::MenuItem);
    auto *menu = found ? found->object()->property("menu").value<QObject *>() : nullptr;
    const int count = menu ? menu->property("count").toInt() : 0;
    for (int i = 0; i < count; ++i) {
        QQuickItem *item = nullptr;
        QMetaObject::invokeMethod(menu, "itemAt", Q_RETURN_ARG(QQuickItem *, item), Q_ARG(int, i));
        texts.append(item->inherits("QQuickMenuSeparator") ? u"-"_s : item->property("text").toString());
    }
    return texts;
}

QQuickWindow *ViewFixture::drawnDialog(const QWindow *besides) const
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow *candidate : windows) {
        if (candidate->isVisible() && candidate != window() && candidate != besides)
            return qobject_cast<QQuickWindow *>(candidate);
    }
    return nullptr;
}

static QQuickItem *itemThatSays(QQuickItem *parent, const QString &text)
{
    const QList<QQuickItem *> children = parent->childItems();
    for (QQuickItem *child : children) {
        if (!child->isVisible())
            continue;
        if (child->property("text").toString() == text && child->width() > 0)
            return child;
        if (QQuickItem *found = itemThatSays(child, text))
            return found;
    }
    return nullptr;
}

bool ViewFixture::clickInDrawn(const QString &text, const QWindow *besides) const
{
    QQuickItem *item = nullptr;
    const auto isShown = [&] {
        QQuickWindow *drawn = drawnDialog(besides);
        return drawn && (item = itemThatSays(drawn->contentItem(), text)) != nullptr;
    };
    if (!QTest::qWaitFor(isShown))
        return false;
    settle(item->window());
    const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
    QTest::mouseClick(item->window(), Qt::LeftButton, {}, middle.toPoint());
    return true;
}

bool ViewFixture::clickArrow(const QString &section, const QString &label, bool up) const
{
    QAccessibleInterface *box = inSection(section, label, QAccessible::SpinBox);
    if (!box)
        return false;
    reveal(box);
    settle(window());
    const QPoint middle = centre(window(), box);
    const int off = box->rect().height() / 4;
    const QPoint arrow(middle.x() + box->rect().width() / 2 - 8, middle.y() + (up ? -off : off));
    QTest::mouseClick(window(), Qt::LeftButton, {}, arrow);
    return true;
}

void ViewFixture::checkTabMenu() const
{
    QVERIFY(offers(QStringLiteral("Close")));
    QCOMPARE(menuWith(QStringLiteral("Close")),
             QStringList({QStringLiteral("Save..."), QStringLiteral("Close")}));
    auto *item =
        qobject_cast<QQuickItem *>(element(QStringLiteral("Close"), QAccessible::MenuItem)->object());
    QCOMPARE(item->property("menu").value<QObject *>()->property("width").toReal(), 160.0);
    QVERIFY(itemWithText(item, QStringLiteral("\uF4C7")));
    QTest::keyClick(window(), Qt::Key_Escape);
}
