#include "tests/qml/window_check.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>

namespace
{
QString describe(const QObject *thing)
{
    return QString::fromLatin1(thing->metaObject()->className()) +
           QStringLiteral(" \"%1\"").arg(thing->property("text").toString());
}

/** What is shown in a window, parents before children. */
void collect(QQuickItem *parent, QList<QQuickItem *> *found)
{
    const QList<QQuickItem *> children = parent->childItems();
    for (QQuickItem *child : children) {
        if (!child->isVisible() || child->opacity() == 0.0)
            continue;
        found->append(child);
        collect(child, found);
    }
}

bool isText(const QQuickItem *item)
{
    return item->inherits("QQuickText") && !item->property("text").toString().isEmpty();
}

bool isControl(const QQuickItem *item)
{
    return std::ranges::any_of(std::initializer_list<const char *>{"QQuickAbstractButton", "QQuickTextField",
                                                                   "QQuickComboBox", "QQuickSpinBox",
                                                                   "QQuickSlider"},
                               [item](const char *kind) { return item->inherits(kind); });
}

/** Where something is in the window; of a text, its letters. */
QRectF place(const QQuickItem *item)
{
    return item->mapRectToScene(isText(item) ? item->boundingRect() : QRectF({}, item->size()));
}

QList<QQuickItem *> pieces(QQuickWindow *window)
{
    QList<QQuickItem *> found;
    collect(window->contentItem(), &found);
    erase_if(found, [](const QQuickItem *item) {
        return place(item).isEmpty() || !(isText(item) || isControl(item));
    });
    return found;
}

void collectNameless(QAccessibleInterface *parent, QStringList *found)
{
    static constexpr QAccessible::Role roles[] = {
        QAccessible::Button,       QAccessible::CheckBox,     QAccessible::RadioButton,
        QAccessible::ComboBox,     QAccessible::Slider,       QAccessible::PageTab,
        QAccessible::SpinBox,      QAccessible::EditableText, QAccessible::MenuItem,
        QAccessible::Graphic,      QAccessible::Link,         QAccessible::ListItem,
        QAccessible::ColumnHeader, QAccessible::Row,          QAccessible::List,
        QAccessible::Table,        QAccessible::PageTabList,  QAccessible::ButtonMenu};
    for (int i = 0; parent && i < parent->childCount(); ++i) {
        QAccessibleInterface *child = parent->child(i);
        if (!child || child->state().invisible)
            continue;
        const bool control = std::ranges::find(roles, child->role()) != std::end(roles);
        if (control && child->text(QAccessible::Name).trimmed().isEmpty())
            found->append(describe(child->object()));
        collectNameless(child, found);
    }
}

bool hasName(const QQuickItem *item)
{
    QAccessibleInterface *element = QAccessible::queryAccessibleInterface(const_cast<QQuickItem *>(item));
    return element && !element->text(QAccessible::Name).trimmed().isEmpty();
}
} // namespace

QStringList WindowCheck::namelessControls(QQuickWindow *window)
{
    QAccessible::setActive(true);
    QStringList found;
    collectNameless(QAccessible::queryAccessibleInterface(window), &found);
    // What the keys can go to is told even if it calls itself nothing; the input of a box is part of the box.
    QList<QQuickItem *> items;
    collect(window->contentItem(), &items);
    for (const QQuickItem *item : std::as_const(items)) {
        const bool partOfABox = item->parentItem() && (item->parentItem()->inherits("QQuickComboBox") ||
                                                       item->parentItem()->inherits("QQuickSpinBox"));
        if ((isControl(item) || item->activeFocusOnTab()) && !partOfABox && !hasName(item))
            found.append(describe(item));
    }
    found.removeDuplicates();
    return found;
}

QStringList WindowCheck::cutPieces(QQuickWindow *window)
{
    QStringList found;
    const QRectF inside = QRectF({}, window->size()).adjusted(-0.5, -0.5, 0.5, 0.5);
    const QList<QQuickItem *> all = pieces(window);
    for (const QQuickItem *item : all) {
        if (!inside.contains(place(item)) || item->property("truncated").toBool())
            found.append(describe(item));
    }
    return found;
}

QStringList WindowCheck::overlappingPieces(QQuickWindow *window)
{
    QStringList found;
    const QList<QQuickItem *> all = pieces(window);
    for (qsizetype i = 0; i < all.size(); ++i) {
        for (qsizetype j = i + 1; j < all.size(); ++j) {
            const QRectF common = place(all[i]) & place(all[j]);
            if (common.width() > 1 && common.height() > 1 && !all[i]->isAncestorOf(all[j]))
                found.append(describe(all[i]) + QStringLiteral(" and ") + describe(all[j]));
        }
    }
    return found;
}
