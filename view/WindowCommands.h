// The menu commands of the child windows that are not waveform views: the
// spectrum, pitch and spectrogram windows, the scope. Each kind of window
// has a command context (a short name such as "pitch"); its features
// register their commands for that context once at start-up, and while a
// window of that context is active the main frame shows its menus in place
// of the waveform view's. A command acts on the window's content widget
// (the QMdiSubWindow's widget()).
#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <vector>

class QMdiSubWindow;

struct WindowCommand {
    QString context;  // "spectrum", "pitch", "spectrogram", "scope", ...
    QString menu;     // top-level menu title, e.g. "&View", "&Log", "&Play", "&Options"
    QString text;     // menu text with its shortcut after '\t'
    QString statusTip;
    int order = 0;                 // position within its menu (ascending)
    bool separatorBefore = false;  // a separator line above this entry
    bool checkable = false;
    std::function<void(QWidget&)> run;
    std::function<bool(const QWidget&)> enabled;         // null: enabled whenever such a window is active
    std::function<bool(const QWidget&)> checked;         // for checkable entries
    std::function<QString(const QWidget&)> dynamicText;  // rewritten each time the menu opens
};

class WindowCommandRegistry {
public:
    static WindowCommandRegistry& instance();
    void add(WindowCommand command) { m_commands.push_back(std::move(command)); }
    const std::vector<WindowCommand>& commands() const { return m_commands; }
    // The contexts that have commands, in the order they were first registered.
    QStringList contexts() const;

private:
    std::vector<WindowCommand> m_commands;
};

// A child frame names the context of its commands once, when it is made.
void setCommandContext(QMdiSubWindow* frame, const QString& context);
// The context of a child frame; empty for waveform views and for windows
// without commands of their own (the log, the label list).
QString commandContext(const QMdiSubWindow* frame);

// A command of windows whose content widget is a W: run and the rules
// receive the widget as a W (a widget of another type never runs it).
template <class W>
WindowCommand windowCommand(const QString& context, const QString& menu, const QString& text, const QString& statusTip,
                            int order, std::function<void(W&)> run, std::function<bool(const W&)> enabled = {},
                            bool separatorBefore = false) {
    WindowCommand c;
    c.context = context;
    c.menu = menu;
    c.text = text;
    c.statusTip = statusTip;
    c.order = order;
    c.separatorBefore = separatorBefore;
    c.run = [run = std::move(run)](QWidget& w) {
        if (auto* target = qobject_cast<W*>(&w)) run(*target);
    };
    c.enabled = [enabled = std::move(enabled)](const QWidget& w) {
        const auto* target = qobject_cast<const W*>(&w);
        return target != nullptr && (!enabled || enabled(*target));
    };
    return c;
}
