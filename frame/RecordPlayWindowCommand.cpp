#include "RecordPlayWindowCommand.h"

#include <QAction>
#include <QMainWindow>
#include <QMdiArea>
#include <QMenuBar>
#include <QToolBar>

#include "CommandMenus.h"
#include "view/scope/CScopeChildFrame.h"
#include "view/scope/ScopeCommands.h"

namespace {

constexpr char kCommandProperty[] = "sonmetraRecordPlayCommand";

// The waveform view's menu titled `title`, so that the entry shows with the
// menus of the document windows and of an empty workspace; a menu of the
// frame's own before the Window menu when that context has none.
QMenu* menuTitled(QMenuBar* bar, const CommandMenus& menus, const QString& title) {
    for (QMenu* menu : menus.menus(QString()))
        if (menu->title() == title) return menu;
    QAction* windowMenu = nullptr;
    for (QAction* a : bar->actions())
        if (a->menu() != nullptr && a->text() == QStringLiteral("&Window")) windowMenu = a;
    auto* menu = new QMenu(title, bar);
    bar->insertMenu(windowMenu, menu);
    return menu;
}

QAction* frameCommand(QMainWindow* frame, const QString& text, const QString& tip) {
    auto* action = new QAction(text, frame);
    action->setStatusTip(tip);
    action->setToolTip(tip);
    action->setProperty(kCommandProperty, true);
    return action;
}

}  // namespace

void addRecordPlayWindowCommand(QMainWindow* frame, QMdiArea* area, const CommandMenus& menus) {
    QMenuBar* bar = frame->menuBar();
    QAction* command = frameCommand(frame, QStringLiteral("Record/Play"),
                                    QStringLiteral("Shows or hides the record and play options"));
    QObject::connect(command, &QAction::triggered, frame, [area] { toggleRecordPlayBesideScope(area); });
    QAction* scope = frameCommand(frame, QStringLiteral("Scope"),
                                  QStringLiteral("Shows the external unit's channels live, to set gains and sources"));
    QObject::connect(scope, &QAction::triggered, frame, [area] { CScopeChildFrame::open(area); });

    // "Record/Play" heads the Options menu; "Scope" ends the Record/Play menu
    // after the recording and play commands it goes with.
    QMenu* options = menuTitled(bar, menus, QStringLiteral("&Options"));
    QAction* first = options->actions().value(0);
    options->insertAction(first, command);
    if (first != nullptr) options->insertSeparator(first);
    QMenu* recordPlay = menuTitled(bar, menus, QStringLiteral("&Record/Play"));
    if (!recordPlay->isEmpty()) recordPlay->addSeparator();
    recordPlay->addAction(scope);

    // Both stay at hand on the toolbar whichever window is in front, the
    // scope's own included.
    QToolBar* tools = frame->addToolBar(QStringLiteral("Record/Play"));
    tools->setObjectName(QStringLiteral("recordPlayToolBar"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextOnly);
    tools->addAction(command);
    tools->addAction(scope);
}

QAction* recordPlayAreaCommand(const QMainWindow* frame, const QString& text) {
    for (QAction* a : frame->findChildren<QAction*>())
        if (a->property(kCommandProperty).toBool() && a->text() == text) return a;
    return nullptr;
}
