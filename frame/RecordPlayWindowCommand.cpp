#include "RecordPlayWindowCommand.h"

#include <QAction>
#include <QMainWindow>
#include <QMdiArea>
#include <QMenuBar>

#include "view/scope/CScopeChildFrame.h"
#include "view/scope/ScopeCommands.h"

namespace {
constexpr char kCommandProperty[] = "sonmetraRecordPlayCommand";
}

void addRecordPlayWindowCommand(QMainWindow* frame, QMdiArea* area) {
    QMenuBar* bar = frame->menuBar();
    QMenu* options = nullptr;
    QAction* windowMenu = nullptr;
    for (QAction* a : bar->actions()) {
        if (a->menu() == nullptr) continue;
        if (a->text() == QStringLiteral("&Options")) options = a->menu();
        if (a->text() == QStringLiteral("&Window")) windowMenu = a;
    }
    if (options == nullptr) {
        options = new QMenu(QStringLiteral("&Options"), bar);
        bar->insertMenu(windowMenu, options);
    }
    QAction* first = options->actions().value(0);
    auto* command = new QAction(QStringLiteral("Record/Play"), options);
    command->setStatusTip(QStringLiteral("Shows or hides the record and play options"));
    command->setProperty(kCommandProperty, true);
    options->insertAction(first, command);
    QObject::connect(command, &QAction::triggered, frame, [area] { toggleRecordPlayBesideScope(area); });
    auto* scope = new QAction(QStringLiteral("Scope"), options);
    scope->setStatusTip(QStringLiteral("Shows the external unit's channels live, to set gains and sources"));
    scope->setProperty(kCommandProperty, true);
    options->insertAction(first, scope);
    QObject::connect(scope, &QAction::triggered, frame, [area] { CScopeChildFrame::open(area); });
    if (first != nullptr) options->insertSeparator(first);
}

QAction* recordPlayAreaCommand(const QMainWindow* frame, const QString& text) {
    for (QAction* a : frame->findChildren<QAction*>())
        if (a->property(kCommandProperty).toBool() && a->text() == text) return a;
    return nullptr;
}
