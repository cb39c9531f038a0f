// The menus of the commands that act on the active child window: the
// waveform view's commands (ViewCommands.h, context "") and those of every
// other kind of window (WindowCommands.h). Each context has its own menus;
// only the active window's context shows them, the others are hidden and
// their entries disabled, so that a shortcut used by two kinds of window
// reaches the one in front.
//
// Menus show each entry's rule as it stands when they open. While they are
// closed, the active context's entries stay enabled so that their shortcuts
// always reach the handler, which applies the rule at that moment.
#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <vector>

class QAction;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QMenuBar;
class QWidget;
class CKestruneView;

class CommandMenus : public QObject {
    Q_OBJECT
public:
    // Builds the menus of every registered context into `bar`, before `before`
    // (the Window menu's action, say). `afterCommand` runs after each command.
    CommandMenus(QMenuBar* bar, QAction* before, QMdiArea* area, std::function<void()> afterCommand);

    // The context of a child frame as the menus know it: its own, or "" (the
    // waveform view's menus) for frames whose context has no commands.
    QString contextOf(const QMdiSubWindow* frame) const;
    // Shows the menus of the current child frame's context.
    void followActiveWindow();
    QString activeContext() const { return m_active; }

    void updateStates();
    void armShortcuts();

    // The entry of a command in a context, by its menu text without the
    // shortcut (toolbars reuse it); null when there is none.
    QAction* action(const QString& context, const QString& text) const;
    // Every entry of a context, in menu order.
    QList<QAction*> actions(const QString& context) const;
    // The menus of a context, in menu-bar order.
    QList<QMenu*> menus(const QString& context) const;
    // Whether the entry's rule lets it run now: what its menu would show on
    // opening. False for entries of a context that is not in front, and for
    // actions that are not entries.
    bool ruleAllows(const QAction* action) const;
    // Puts `actions` (toggles shared by every window, say) at the end of the
    // menu `title` of every context, after a separator; a context without
    // such a menu gets one. They are no entries: no rule, always enabled.
    void addToEveryContext(const QString& title, const QList<QAction*>& actions);

signals:
    void contextChanged(const QString& context);

private:
    struct Entry {
        QAction* action = nullptr;
        std::function<bool()> rule;  // the enabling rule, for the active window
        std::function<void()> update;
    };
    struct Context {
        QString name;
        QList<QMenu*> menus;
        std::vector<Entry> entries;
    };

    void buildWaveformContext(QMenuBar* bar, QAction* before);
    void buildWindowContext(const QString& name, QMenuBar* bar, QAction* before);
    Context* contextNamed(const QString& name);
    const Context* contextNamed(const QString& name) const;
    CKestruneView* activeView() const;
    QWidget* activeWindowOf(const QString& context) const;
    QMenu* addMenu(Context& context, QMenuBar* bar, QAction* before, const QString& title);

    QMenuBar* m_bar;
    QAction* m_before;  // the menus go in front of it
    QMdiArea* m_area;
    std::function<void()> m_afterCommand;
    std::vector<Context> m_contexts;  // [0] is the waveform view's
    QString m_active;
};

// "Cu&t\tCtrl+X" as an action of `menu`: text "Cu&t", shortcut Ctrl+X.
QAction* actionFromMenuText(QMenu* menu, const QString& menuText);
