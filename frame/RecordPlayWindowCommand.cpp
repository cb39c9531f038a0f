#include "RecordPlayWindowCommand.h"

#include <QAction>
#include <QMainWindow>
#include <QMdiArea>
#include <QMenuBar>

#include "view/recordplay/CFrameRecordPlay.h"

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
    options->insertAction(first, command);
    if (first != nullptr) options->insertSeparator(first);
    QObject::connect(command, &QAction::triggered, frame, [area] { CFrameRecordPlay::toggle(area); });
}
