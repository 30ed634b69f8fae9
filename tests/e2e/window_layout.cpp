#include "tests/e2e/window_layout.h"

#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{
constexpr int panelWidth = 268;
constexpr int tabBarWidth = 240;
constexpr int headerHeight = 20;
constexpr int valueX = 126; // of the value column
constexpr int valueWidth = 138;
constexpr int edgeHeight = 5; // closes the value column above and below
constexpr QRgb paneEdge = 0xFF212121;

struct Row {
    const char *name;
    int height;
};

struct Section {
    const char *name;
    std::vector<Row> rows;
};

const std::array<Section, 4> sections = {{
    {"Camera", {{"Name", 25}, {"Serial", 25}, {"IP Address", 25}, {"Model", 25}}},
    {"Acquisition", {{"State", 25}, {"", 4}, {"Black Reference", 40}, {"", 4}, {"Record", 40}}},
    {"Image Tools",
     {{"Transform", 24},
      {"", 8},
      {"Focus Peaking", 30},
      {"Exposure Assist", 30},
      {"", 8},
      {"Histogram", 64}}},
    {"Color Adjustments",
     {{"White Balance", 25}, {"Red", 44}, {"Green", 44}, {"Blue", 44}, {"", 4}, {"Auto White Balance", 30}}},
}};

int sectionHeight(const Section &section, bool folded)
{
    if (folded)
        return 2 + headerHeight + 2;
    int rows = 0;
    for (const Row &row : section.rows)
        rows += row.height;
    return 2 + headerHeight + 2 + edgeHeight + rows + edgeHeight + 2;
}
} // namespace

WindowLayout::WindowLayout(const QImage &window) : m_size(window.size())
{
    int y = 0;
    while (y < window.height() && window.pixel(0, y) != paneEdge)
        ++y;
    m_top = y < window.height() ? y - 2 : 0;
}

void WindowLayout::setFolded(const QString &section, bool folded)
{
    if (folded)
        m_folded.insert(section);
    else
        m_folded.remove(section);
}

int WindowLayout::sectionTop(const QString &name) const
{
    int y = panelTop();
    for (const Section &section : sections) {
        const QString here = QString::fromLatin1(section.name);
        if (here == name)
            return y;
        y += sectionHeight(section, m_folded.contains(here)) + 2;
    }
    qFatal("no section %s", qPrintable(name));
}

QPoint WindowLayout::sectionHeader(const QString &section) const
{
    return {panelWidth / 2, sectionTop(section) + 2 + headerHeight / 2};
}

QRect WindowLayout::widget(const QString &wanted) const
{
    for (const Section &section : sections) {
        int y = sectionTop(QString::fromLatin1(section.name)) + 2 + headerHeight + 2 + edgeHeight;
        for (const Row &row : section.rows) {
            if (QString::fromLatin1(row.name) == wanted)
                return QRect(valueX, y, valueWidth, row.height).adjusted(5, 0, -5, 0);
            y += row.height;
        }
    }
    qFatal("no row %s", qPrintable(wanted));
}

QPoint WindowLayout::transformButton(int index) const
{
    const QRect row = widget(u"Transform"_s);
    return {row.left() + row.width() * (2 * index + 1) / 8, row.center().y()};
}

QPoint WindowLayout::editNameButton() const
{
    const QRect row = widget(u"Name"_s);
    return {row.right() - 10, row.center().y()};
}

QPoint WindowLayout::choice(const QString &row, int index) const
{
    // The list opens over the box; 27 is the height of a menu item in this font.
    return widget(row).center() + QPoint(0, 27 * index);
}

QPoint WindowLayout::fileMenu() const
{
    return {16, m_top / 2};
}

QPoint WindowLayout::fileMenuItem(int index) const
{
    // 20 for an item, 3 for a separator.
    constexpr std::array offsets = {11, 34, 57};
    return {100, m_top + offsets.at(static_cast<size_t>(index))};
}

QRect WindowLayout::tab() const
{
    // A rule of 1 at the left; the box is 16 narrower than the rest and under a
    // row of buttons.
    return {m_size.width() - tabBarWidth + 1 + 8, m_top + 10 + 24 + 10, tabBarWidth - 1 - 16, 50};
}

QRect WindowLayout::tabIcon() const
{
    return QRect(tab().topLeft(), QSize(50, 50)).adjusted(8, 8, -8, -8);
}

QRect WindowLayout::tabName() const
{
    return tab().adjusted(50, 8, -8, -8);
}

QRect WindowLayout::mainArea() const
{
    return {0, m_top, m_size.width() - tabBarWidth, m_size.height() - m_top};
}

QRect WindowLayout::pictureArea() const
{
    return mainArea().adjusted(panelWidth + 50, 50, -50, -50);
}

QRect WindowLayout::timestamp() const
{
    return {panelWidth + 20, m_top + 20, 250, 15};
}

QRect WindowLayout::readOut() const
{
    return {panelWidth + 20, m_size.height() - 40, 250, 24};
}
