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

const std::vector<Row> lineRows = {{"Signal", 30},     {"Mode", 30},       {"Polarity", 30}, {"Delay", 30},
                                   {"Min. Width", 30}, {"Max. Width", 30}, {"Filter", 30}};

const std::vector<Row> toolRows = {{"Transform", 24},       {"", 8}, {"Focus Peaking", 30},
                                   {"Exposure Assist", 30}, {"", 8}, {"Histogram", 64}};
const std::vector<Row> adjustmentRows = {{"Channel", 30},  {"Offset", 44}, {"Gain", 44}, {"Gamma", 44},
                                         {"Contrast", 44}, {"", 4},        {"Reset", 30}};
const std::vector<Row> colourRows = {{"White Balance", 25}, {"Red", 44}, {"Green", 44},
                                     {"Blue", 44},          {"", 4},     {"Auto White Balance", 30}};

// Everything that a camera can have, in the order of the panel.
const std::vector<Section> cameraSections = {
    {"Camera", {{"Name", 25}, {"Serial", 25}, {"IP Address", 25}, {"Model", 25}}},
    {"Acquisition",
     {{"State", 25},
      {"Resolution", 30},
      {"Frame Rate", 30},
      {"Exposure Time", 30},
      {"Trigger Offset", 30},
      {"Frame Sync Mode", 30},
      {"Black Ref Mode", 30},
      {"", 4},
      {"Black Reference", 40},
      {"", 4},
      {"Record", 40}}},
    {"Frame Buffer",
     {{"Take", 25}, {"Recorded Frames", 25}, {"Partition Size", 25}, {"", 4}, {"Partition", 30}}},
    {"Image Tools", toolRows},
    {"Image Adjustments", adjustmentRows},
    {"Color Adjustments", colourRows},
    {"SSD",
     {{"State", 25},
      {"Name", 25},
      {"Storage Used", 25},
      {"", 4},
      {"Open SSD Take", 30},
      {"", 4},
      {"Eject", 30},
      {"", 4},
      {"Format", 30}}},
    {"SSD Autosave",
     {{"Mode", 30},
      {"Save", 30},
      {"Start Frame", 25},
      {"Frame Count", 25},
      {"After Save", 30},
      {"File Name", 25},
      {"File Name Seq", 25}}},
    {"Lens & Shutter",
     {{"Mount", 25},
      {"Name", 25},
      {"Focal Length", 25},
      {"Focus Distance", 25},
      {"Focus", 56},
      {"F-stop", 30},
      {"", 4},
      {"Shutter", 30}}},
    {"Trigger I/O", lineRows},
    {"I/O 1", lineRows},
    {"I/O 2", lineRows},
    {"I/O 3", lineRows},
    {"I/O 4", lineRows},
    {"I/O 5", lineRows},
    {"I/O 6", lineRows},
    {"Video", {{"Format", 30}}},
    {"Firmware", {{"Version", 25}, {"", 4}, {"Firmware Update", 30}}},
};

// The same of a take.
const std::vector<Section> takeSections = {
    {"Take",
     {{"Take Number", 25},
      {"Resolution", 25},
      {"Frame Rate", 25},
      {"Exposure Time", 25},
      {"Frame Sync Mode", 25},
      {"Black Ref Mode", 30},
      {"", 4},
      {"Delete...", 30},
      {"Save...", 30}}},
    {"Camera", {{"Name", 25}, {"Serial", 25}, {"Model", 25}, {"Firmware Version", 25}}},
    {"Image Tools", toolRows},
    {"Image Adjustments", adjustmentRows},
    {"Color Adjustments", colourRows},
    {"Image Search", {{"Reference Frame", 30}, {"Frame Step", 30}, {"Threshold", 44}}},
    {"Lens Info",
     {{"Mount", 25}, {"Name", 25}, {"Focal Length", 25}, {"Focus Distance", 25}, {"F-stop", 25}}},
};

// And of a native file.
const std::vector<Section> fileSections = {
    {"VESK File",
     {{"File Name", 25},
      {"Resolution", 25},
      {"Frame Rate", 25},
      {"Exposure Time", 25},
      {"Frame Sync Mode", 25},
      {"Black Ref Mode", 25},
      {"", 4},
      {"Save...", 30}}},
};

const std::vector<Section> &sectionsOf(WindowLayout::Panel panel)
{
    switch (panel) {
    case WindowLayout::Panel::Take:
        return takeSections;
    case WindowLayout::Panel::File:
        return fileSections;
    default:
        return cameraSections;
    }
}

// The controls of playback: their height, and what lies in it from left to right.
constexpr int playbackHeight = 100;
constexpr int transportMargin = 10;
constexpr int transportWidth = 200;
constexpr int playbackSpacing = 20;
constexpr int settingsWidth = 145;
constexpr int settingsMargin = 20;
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

void WindowLayout::setHidden(const QString &section, const QStringList &rows)
{
    for (const QString &row : rows)
        m_hidden.insert(section + u'/' + row);
}

void WindowLayout::setShown(const QString &section, const QStringList &rows)
{
    for (const QString &row : rows)
        m_hidden.remove(section + u'/' + row);
}

bool WindowLayout::isHidden(const char *section, const char *row) const
{
    return m_hidden.contains(QString::fromLatin1(section) + u'/' + QString::fromLatin1(row));
}

int WindowLayout::sectionTop(const QString &name) const
{
    int y = panelTop();
    for (const Section &section : sectionsOf(m_panel)) {
        const QString here = QString::fromLatin1(section.name);
        if (here == name)
            return y;
        y += 2 + headerHeight + 2 + 2;
        if (m_folded.contains(here))
            continue;
        y += edgeHeight + edgeHeight + 2;
        for (const Row &row : section.rows)
            y += isHidden(section.name, row.name) ? 0 : row.height;
    }
    qFatal("no section %s", qPrintable(name));
}

QPoint WindowLayout::sectionHeader(const QString &section) const
{
    return {panelWidth / 2, sectionTop(section) + 2 + headerHeight / 2};
}

QRect WindowLayout::widget(const QString &wanted, const QString &wantedSection) const
{
    for (const Section &section : sectionsOf(m_panel)) {
        if (!wantedSection.isEmpty() && QString::fromLatin1(section.name) != wantedSection)
            continue;
        int y = sectionTop(QString::fromLatin1(section.name)) + 2 + headerHeight + 2 + edgeHeight;
        for (const Row &row : section.rows) {
            if (QString::fromLatin1(row.name) == wanted)
                return QRect(valueX, y, valueWidth, row.height).adjusted(5, 0, -5, 0);
            y += isHidden(section.name, row.name) ? 0 : row.height;
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
    const QRect row = widget(u"Name"_s, u"Camera"_s);
    return {row.right() - 10, row.center().y()};
}

QPoint WindowLayout::choice(const QRect &widget, int index)
{
    // The list opens over the box; 27 is the height of a menu item in this font.
    return widget.center() + QPoint(0, 27 * index);
}

QRect WindowLayout::label(const QString &row, const QString &section) const
{
    const QRect value = widget(row, section);
    return {4, value.top(), valueX - 8, value.height()};
}

QPoint WindowLayout::fileMenu() const
{
    return {16, m_top / 2};
}

QPoint WindowLayout::fileMenuItem(int index) const
{
    // 20 for an item, 3 for a separator.
    constexpr std::array ofCamera = {11, 31, 54, 74, 94, 117};
    constexpr std::array ofOthers = {11, 31, 54, 74, 97};
    const auto place = static_cast<size_t>(index);
    return {100, m_top + (m_panel == Panel::Camera ? ofCamera.at(place) : ofOthers.at(place))};
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

QRect WindowLayout::takeTab(int place) const
{
    // 28 high; the borders of 2 lie on each other.
    return {tab().left(), tab().bottom() - 1 + 26 * (place - 1), tab().width(), 28};
}

QRect WindowLayout::takeTabIcon(int place) const
{
    return QRect(takeTab(place).topLeft() + QPoint(5, 0), QSize(50, 28)).adjusted(4, 4, -4, -4);
}

QRect WindowLayout::mainArea() const
{
    return {0, m_top, m_size.width() - tabBarWidth, m_size.height() - m_top};
}

QRect WindowLayout::pictureArea() const
{
    const int below = m_panel == Panel::Camera ? 0 : playbackHeight;
    return mainArea().adjusted(panelWidth + 50, 50, -50, -50 - below);
}

QRect WindowLayout::timestamp() const
{
    return {panelWidth + 20, m_top + 20, 250, 15};
}

QRect WindowLayout::readOut() const
{
    return {panelWidth + 20, m_size.height() - 40, 250, 24};
}

QRect WindowLayout::playback() const
{
    const QRect area = mainArea();
    return {panelWidth, area.bottom() + 1 - playbackHeight, area.width() - panelWidth, playbackHeight};
}

QPoint WindowLayout::playButton(int index) const
{
    return playback().topLeft() + QPoint(transportMargin + transportWidth * (2 * index + 1) / 10, 25);
}

QPoint WindowLayout::stepButton(int index) const
{
    return playButton(index) + QPoint(0, 25 + 20);
}

QRect WindowLayout::savesRow(int index) const
{
    // The box is 25 smaller than the area and has a border; a header of 28, rows of 48.
    const QRect box = mainArea().adjusted(12, 12, -12, -12).adjusted(1, 1, -1, -1);
    return {box.left(), box.top() + 28 + 48 * index, box.width(), 48};
}

QRect WindowLayout::savesOpenButton(int index) const
{
    const QRect row = savesRow(index);
    return {row.left() + 72 + 240 + 200 + 200 + 240 + 10, row.center().y() - 12, 18, 24};
}

QRect WindowLayout::savesCloseButton(int index) const
{
    return savesOpenButton(index).translated(18 + 8, 0);
}

QPoint WindowLayout::onBar(double place) const
{
    // The track is 5 shorter than the bar at either side.
    const QRect row = frameRow();
    return {row.left() - 6 + 5 + qRound(place * (row.width() + 12 - 11)), playback().bottom() - 56};
}

QRect WindowLayout::frameRow() const
{
    // 12 narrower than the column of the bar.
    const int left = playback().left() + transportMargin + transportWidth + playbackSpacing;
    const int right = playback().right() + 1 - settingsMargin - settingsWidth - playbackSpacing;
    return {left + 6, playback().bottom() - 38, right - left - 12, 24};
}
