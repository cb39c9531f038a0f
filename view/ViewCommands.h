// The menu commands that act on the active waveform view, with their
// enabling rules. Each feature registers its commands once at start-up; the
// main frame builds its menus from the registry and applies the rules before
// a menu opens and whenever the active view changes.
#pragma once

#include <QString>
#include <functional>
#include <vector>

class CKestruneView;

struct ViewCommand {
    QString menu;  // top-level menu title, e.g. "&Edit", "&View", "&Analysis", "&Label", "&Options"
    QString text;  // menu text with its shortcut after '\t', e.g. "Cu&t\tCtrl+X"
    QString statusTip;
    int order = 0;                 // position within its menu (ascending)
    bool separatorBefore = false;  // a separator line above this entry
    bool checkable = false;
    std::function<void(CKestruneView&)> run;
    std::function<bool(const CKestruneView&)> enabled;         // null: enabled whenever a view is active
    std::function<QString(const CKestruneView&)> dynamicText;  // rewritten each time the menu opens
    std::function<bool(const CKestruneView&)> checked;         // for checkable entries
};

class ViewCommandRegistry {
public:
    static ViewCommandRegistry& instance();
    void add(ViewCommand command) { m_commands.push_back(std::move(command)); }
    const std::vector<ViewCommand>& commands() const { return m_commands; }
    // The top-level command menus, of every window's context, in the order
    // they stand in the menu bar.
    static const QStringList& menuOrder();

private:
    std::vector<ViewCommand> m_commands;
};
