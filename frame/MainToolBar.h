// The main frame's toolbar: buttons for the everyday commands of the menus
// (File, Edit, zoom, record and play, the analyses). A button owns no
// command of its own: it runs the menu entry of the same text and is enabled
// by that entry's rule, so toolbar and menus never disagree.
//
// While a window other than a waveform view is in front, each button runs
// that window's entry of the same text (its Print..., Copy or Play All) and
// is disabled when the window has none; New and Open are always there.
// Commands missing from the build (an analysis not yet built in) have no
// button.
//
// Menus keep their entries enabled while closed (their handlers check the
// rule), so the buttons take their state from the rules themselves: after
// every mouse or key release, when another window comes to the front, and a
// few times a second for changes that no input causes (playback ending).
#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QToolBar>
#include <functional>
#include <vector>

class CommandMenus;
class QDockWidget;
class QMainWindow;
class QMenu;
class QTimer;

class MainToolBar : public QToolBar {
    Q_OBJECT
public:
    // One button: the menu text it stands for (without '&' and shortcut),
    // the theme icon, the bundled icon, and a prompt for entries whose menu
    // gives none.
    struct Item {
        QString text;
        QString themeIcon;
        QString bundledIcon;  // file name under the toolbar icons' resource folder
        QString prompt;
        bool fromFileMenu = false;
        bool separatorBefore = false;
    };
    static const std::vector<Item>& items();

    // allowed(action): whether the action's rule lets it run now (the main
    // frame's File entries and every context's entries).
    MainToolBar(QMainWindow* frame, CommandMenus* menus, QMenu* fileMenu, std::function<bool(QAction*)> allowed);

    // The button for a menu text (as in items()); null when the build lacks it.
    QAction* button(const QString& text) const;
    QList<QAction*> buttons() const;
    // The menu entry a button runs now; null when the window in front has none.
    QAction* entryFor(const QAction* button) const;
    // Applies the rules to every button.
    void refresh();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Button {
        const Item* item = nullptr;
        QAction* button = nullptr;
        QAction* fileAction = nullptr;  // for File entries; context entries are looked up each time
    };
    QAction* targetOf(const Button& b) const;
    void scheduleRefresh();

    QPointer<CommandMenus> m_menus;  // null once the menus are gone
    std::function<bool(QAction*)> m_allowed;
    std::vector<Button> m_buttons;
    QTimer* m_poll;
    bool m_refreshQueued = false;
};

// The icon of a toolbar item: the desktop theme's, else the bundled one.
QIcon toolbarIcon(const QString& themeName, const QString& bundledName);

// "Toolbar" and "Status Window" toggles at the end of the View menu of every
// kind of window, so that either comes back from wherever the user is.
// Their states are kept in the settings when the user changes them.
void addViewToggles(QMainWindow* frame, CommandMenus* menus, QToolBar* toolBar, QDockWidget* statusWindow);
