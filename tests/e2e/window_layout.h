#pragma once

#include <QImage>
#include <QRect>
#include <QSet>
#include <QString>

/// Where things are in the window while a camera is selected, worked out from
/// the sizes of the design: a control that has moved is not found. All places
/// are in the window's own pixels.
class WindowLayout
{
public:
    /// Takes the height of the menu bar, which is the style's, from a picture of
    /// the window.
    explicit WindowLayout(const QImage &window);

    /// False when the picture shows no camera's panel.
    bool valid() const { return m_top > 0; }

    /// Which source is selected; from the start it is a camera.
    enum class Panel { Camera, Take, File };
    void setPanel(Panel panel) { m_panel = panel; }

    /// Tells that a section of the panel is folded; those of colours, lines and
    /// firmware are so from the start.
    void setFolded(const QString &section, bool folded);

    QPoint sectionHeader(const QString &section) const;
    /// Tells that rows of a section are not there, or there again; from the start
    /// those of an autosave that is off are not.
    void setHidden(const QString &section, const QStringList &rows);
    void setShown(const QString &section, const QStringList &rows);

    /// The widget of a row of the panel: "Record", "Focus Peaking". The section
    /// is needed for labels that several of them have.
    QRect widget(const QString &row, const QString &section = {}) const;
    QRect label(const QString &row, const QString &section = {}) const;
    /// Left to right: flips, quarter turns.
    QPoint transformButton(int index) const;
    QPoint editNameButton() const;
    /// An entry of a combo box's open list.
    static QPoint choice(const QRect &widget, int index);

    QPoint fileMenu() const;
    /// Of a camera: Connect Camera, Open VESK File, Open SSD Take, Delete All Takes, Disconnect, Exit. Of
    /// others: the first two, Save, Delete or Close, Exit.
    QPoint fileMenuItem(int index) const;

    /// The first tab: its box, the icon in it, and the camera's name.
    QRect tab() const;
    /// The tab of a take below it, from 1 for the first that is there.
    QRect takeTab(int place) const;
    QRect takeTabIcon(int place) const;
    QRect tabIcon() const;
    QRect tabName() const;

    /// Left of the tabs and under the menu bar.
    QRect mainArea() const;

    /// Where the picture may be, and the texts around it.
    QRect pictureArea() const;
    QRect timestamp() const;
    QRect readOut() const;

    /// The controls of playback below the picture of a take.
    QRect playback() const;
    /// Rewind, play backwards, play, fast forward, repeat.
    QPoint playButton(int index) const;
    /// Skip back, step back, trigger, step forward, skip forward.
    QPoint stepButton(int index) const;
    /// A place of the bar, from 0 at its first frame to 1 at its last.
    QPoint onBar(double place) const;
    /// The row of frame numbers below the bar, and the search's in its place.
    QRect frameRow() const;
    QPoint startHere() const { return frameRow().topLeft() + QPoint(9, 12); }
    QPoint endHere() const { return frameRow().topRight() + QPoint(-9, 12); }

    /// A save in the list of saves, and its buttons.
    QRect savesRow(int index) const;
    QRect savesOpenButton(int index) const;
    QRect savesCloseButton(int index) const;

private:
    int panelTop() const { return m_top + 2; }
    int sectionTop(const QString &section) const;
    bool isHidden(const char *section, const char *row) const;

    Panel m_panel = Panel::Camera;
    QSize m_size;
    int m_top = 0; ///< of all that is under the menu bar
    QSet<QString> m_folded = {QStringLiteral("Color Adjustments"),
                              QStringLiteral("Trigger I/O"),
                              QStringLiteral("I/O 1"),
                              QStringLiteral("I/O 2"),
                              QStringLiteral("I/O 3"),
                              QStringLiteral("I/O 4"),
                              QStringLiteral("I/O 5"),
                              QStringLiteral("I/O 6"),
                              QStringLiteral("Firmware")};
    QSet<QString> m_hidden = {
        QStringLiteral("SSD Autosave/Save"),        QStringLiteral("SSD Autosave/Start Frame"),
        QStringLiteral("SSD Autosave/Frame Count"), QStringLiteral("SSD Autosave/After Save"),
        QStringLiteral("SSD Autosave/File Name"),   QStringLiteral("SSD Autosave/File Name Seq")};
};
