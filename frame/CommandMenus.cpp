#include "CommandMenus.h"

#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <algorithm>

#include "CChildFrame.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"

QAction* actionFromMenuText(QMenu* menu, const QString& menuText) {
    const QStringList parts = menuText.split('\t');
    auto* action = menu->addAction(parts.at(0));
    if (parts.size() > 1) action->setShortcut(QKeySequence(parts.at(1)));
    return action;
}

namespace {

// The titles of `commands` in menu-bar order: listed titles first, the rest
// in the order they were registered.
template <class Command>
QStringList orderedTitles(const std::vector<const Command*>& commands) {
    QStringList titles;
    for (const QString& t : ViewCommandRegistry::menuOrder())
        if (std::any_of(commands.begin(), commands.end(), [&](const Command* c) { return c->menu == t; }))
            titles.push_back(t);
    for (const Command* c : commands)
        if (!titles.contains(c->menu)) titles.push_back(c->menu);
    return titles;
}

template <class Command>
std::vector<const Command*> entriesOf(const std::vector<const Command*>& commands, const QString& title) {
    std::vector<const Command*> entries;
    for (const Command* c : commands)
        if (c->menu == title) entries.push_back(c);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Command* a, const Command* b) { return a->order < b->order; });
    return entries;
}

}  // namespace

CommandMenus::CommandMenus(QMenuBar* bar, QAction* before, QMdiArea* area, std::function<void()> afterCommand)
    : QObject(bar), m_bar(bar), m_before(before), m_area(area), m_afterCommand(std::move(afterCommand)) {
    buildWaveformContext(bar, before);
    for (const QString& name : WindowCommandRegistry::instance().contexts()) buildWindowContext(name, bar, before);
    m_active = QStringLiteral("?");  // nothing shown yet: the first follow shows one context
    followActiveWindow();
}

QMenu* CommandMenus::addMenu(Context& context, QMenuBar* bar, QAction* before, const QString& title) {
    auto* menu = new QMenu(title, bar);
    bar->insertMenu(before, menu);
    connect(menu, &QMenu::aboutToShow, this, [this] { updateStates(); });
    connect(menu, &QMenu::aboutToHide, this, [this] { armShortcuts(); });
    context.menus.push_back(menu);
    return menu;
}

void CommandMenus::buildWaveformContext(QMenuBar* bar, QAction* before) {
    m_contexts.push_back(Context{QString(), {}, {}});
    Context& context = m_contexts.back();
    std::vector<const ViewCommand*> commands;
    for (const ViewCommand& c : ViewCommandRegistry::instance().commands()) commands.push_back(&c);
    for (const QString& title : orderedTitles(commands)) {
        QMenu* menu = addMenu(context, bar, before, title);
        for (const ViewCommand* c : entriesOf(commands, title)) {
            if (c->separatorBefore) menu->addSeparator();
            QAction* a = actionFromMenuText(menu, c->text);
            a->setStatusTip(c->statusTip);
            a->setToolTip(c->statusTip.isEmpty() ? a->text().remove('&') : c->statusTip);
            a->setCheckable(c->checkable);
            connect(a, &QAction::triggered, this, [this, c] {
                CKestruneView* view = activeView();
                if (view && (!c->enabled || c->enabled(*view))) c->run(*view);
                if (m_afterCommand) m_afterCommand();
            });
            const QString baseText = a->text();
            auto rule = [this, c] {
                CKestruneView* view = activeView();
                return view && (!c->enabled || c->enabled(*view));
            };
            context.entries.push_back({a, rule, [this, a, c, rule, baseText] {
                                           CKestruneView* view = activeView();
                                           a->setEnabled(rule());
                                           if (c->dynamicText) a->setText(view ? c->dynamicText(*view) : baseText);
                                           if (c->checked) a->setChecked(view && c->checked(*view));
                                       }});
        }
    }
}

void CommandMenus::buildWindowContext(const QString& name, QMenuBar* bar, QAction* before) {
    m_contexts.push_back(Context{name, {}, {}});
    Context& context = m_contexts.back();
    std::vector<const WindowCommand*> commands;
    for (const WindowCommand& c : WindowCommandRegistry::instance().commands())
        if (c.context == name) commands.push_back(&c);
    for (const QString& title : orderedTitles(commands)) {
        QMenu* menu = addMenu(context, bar, before, title);
        for (const WindowCommand* c : entriesOf(commands, title)) {
            if (c->separatorBefore) menu->addSeparator();
            QAction* a = actionFromMenuText(menu, c->text);
            a->setStatusTip(c->statusTip);
            a->setToolTip(c->statusTip.isEmpty() ? a->text().remove('&') : c->statusTip);
            a->setCheckable(c->checkable);
            connect(a, &QAction::triggered, this, [this, c, name] {
                QWidget* window = activeWindowOf(name);
                if (window && (!c->enabled || c->enabled(*window))) c->run(*window);
                if (m_afterCommand) m_afterCommand();
            });
            const QString baseText = a->text();
            auto rule = [this, c, name] {
                QWidget* window = activeWindowOf(name);
                return window && (!c->enabled || c->enabled(*window));
            };
            context.entries.push_back({a, rule, [this, a, c, name, rule, baseText] {
                                           QWidget* window = activeWindowOf(name);
                                           a->setEnabled(rule());
                                           if (c->dynamicText) a->setText(window ? c->dynamicText(*window) : baseText);
                                           if (c->checked) a->setChecked(window && c->checked(*window));
                                       }});
        }
    }
}

CommandMenus::Context* CommandMenus::contextNamed(const QString& name) {
    for (Context& c : m_contexts)
        if (c.name == name) return &c;
    return nullptr;
}

const CommandMenus::Context* CommandMenus::contextNamed(const QString& name) const {
    for (const Context& c : m_contexts)
        if (c.name == name) return &c;
    return nullptr;
}

QString CommandMenus::contextOf(const QMdiSubWindow* frame) const {
    const QString name = commandContext(frame);
    return contextNamed(name) != nullptr ? name : QString();
}

CKestruneView* CommandMenus::activeView() const {
    auto* frame = qobject_cast<CChildFrame*>(m_area->currentSubWindow());
    return frame ? frame->kestruneView() : nullptr;
}

QWidget* CommandMenus::activeWindowOf(const QString& context) const {
    QMdiSubWindow* frame = m_area->currentSubWindow();
    return frame && commandContext(frame) == context ? frame->widget() : nullptr;
}

void CommandMenus::followActiveWindow() {
    const QString next = contextOf(m_area->currentSubWindow());
    if (next == m_active) {
        armShortcuts();
        return;
    }
    m_active = next;
    for (const Context& c : m_contexts)
        for (QMenu* menu : c.menus) menu->menuAction()->setVisible(c.name == m_active);
    armShortcuts();
    emit contextChanged(m_active);
}

void CommandMenus::updateStates() {
    if (const Context* c = contextNamed(m_active))
        for (const Entry& e : c->entries) e.update();
}

void CommandMenus::armShortcuts() {
    for (const Context& c : m_contexts)
        for (const Entry& e : c.entries) e.action->setEnabled(c.name == m_active);
}

QAction* CommandMenus::action(const QString& context, const QString& text) const {
    if (const Context* c = contextNamed(context))
        for (const Entry& e : c->entries)
            if (e.action->text() == text || e.action->text().remove('&') == QString(text).remove('&')) return e.action;
    return nullptr;
}

QList<QAction*> CommandMenus::actions(const QString& context) const {
    QList<QAction*> list;
    if (const Context* c = contextNamed(context))
        for (const Entry& e : c->entries) list.push_back(e.action);
    return list;
}

QList<QMenu*> CommandMenus::menus(const QString& context) const {
    const Context* c = contextNamed(context);
    return c ? c->menus : QList<QMenu*>();
}

bool CommandMenus::ruleAllows(const QAction* action) const {
    if (const Context* c = contextNamed(m_active))
        for (const Entry& e : c->entries)
            if (e.action == action) return e.rule();
    return false;
}

void CommandMenus::addToEveryContext(const QString& title, const QList<QAction*>& actions) {
    const QStringList& order = ViewCommandRegistry::menuOrder();
    const auto rank = [&order](const QString& t) {
        const auto i = order.indexOf(t);
        return i < 0 ? order.size() : i;
    };
    for (Context& context : m_contexts) {
        QMenu* menu = nullptr;
        for (QMenu* m : context.menus)
            if (m->title() == title) menu = m;
        if (menu == nullptr) {
            // In menu-bar order among the context's own menus.
            qsizetype at = 0;
            while (at < context.menus.size() && rank(context.menus.at(at)->title()) <= rank(title)) ++at;
            QAction* before = at < context.menus.size() ? context.menus.at(at)->menuAction() : m_before;
            menu = addMenu(context, m_bar, before, title);
            context.menus.move(context.menus.size() - 1, at);
            menu->menuAction()->setVisible(context.name == m_active);
        } else {
            menu->addSeparator();
        }
        menu->addActions(actions);
    }
}
