#include "ScopeCommands.h"

#include <QMdiArea>
#include <QPainter>

#include "CScopeChildFrame.h"
#include "CScopeView.h"
#include "document/AppConfig.h"
#include "view/PictureOutput.h"
#include "view/WindowCommands.h"
#include "view/recordplay/CFrameRecordPlay.h"
#include "view/recordplay/RecordPlayConfig.h"

namespace {

void saveAsBitmap(CScopeView& view) {
    if (const auto path = askBitmapPath(&view, QStringLiteral("Save As bmp"), bitmapFileName(QStringLiteral("Scope"))))
        writeBitmap(view.picture(), *path);
}

std::function<void(QPrinter&)> printer(CScopeView& view) {
    return [&view](QPrinter& p) {
        printPicture(p, recordPlayConfig().m_print,
                     [&view](QPainter& painter, QSize size) { view.drawPicture(painter, size); });
    };
}

QMdiArea* areaOf(const CScopeView& view) {
    const auto* frame = qobject_cast<const QMdiSubWindow*>(view.parentWidget());
    return frame != nullptr ? frame->mdiArea() : nullptr;
}

}  // namespace

void toggleRecordPlayBesideScope(QMdiArea* area) {
    const bool made = CFrameRecordPlay::instance() == nullptr;
    CFrameRecordPlay* options = CFrameRecordPlay::toggle(area);
    const CScopeChildFrame* scope = CScopeChildFrame::instance();
    if (!made || scope == nullptr || area == nullptr || scope->mdiArea() != area) return;
    const int room = area->viewport()->width();
    options->move(std::max(0, std::min(scope->geometry().right() + 1, room - options->width())), 0);
}

void registerScopeCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    const QString context = CScopeChildFrame::kCommandContext;
    auto& registry = WindowCommandRegistry::instance();
    registry.add(windowCommand<CScopeView>(context, QStringLiteral("&View"), QStringLiteral("Save As bmp..."),
                                           QStringLiteral("Saves the scope's picture as a bitmap file"), 100,
                                           saveAsBitmap));
    registry.add(windowCommand<CScopeView>(
        context, QStringLiteral("&View"), QStringLiteral("Print..."), QStringLiteral("Prints the scope's picture"), 110,
        [](CScopeView& v) { runPrintDialog(&v, printer(v)); }, {}, true));
    registry.add(windowCommand<CScopeView>(context, QStringLiteral("&View"), QStringLiteral("Print Preview"),
                                           QStringLiteral("Shows the scope's printout"), 111,
                                           [](CScopeView& v) { runPrintPreview(&v, printer(v)); }));
    registry.add(windowCommand<CScopeView>(context, QStringLiteral("&Options"), QStringLiteral("Record/Play"),
                                           QStringLiteral("Shows or hides the record and play options"), 10,
                                           [](CScopeView& v) { toggleRecordPlayBesideScope(areaOf(v)); }));
    // "Scope" in front of a scope that has stopped starts it again.
    registry.add(windowCommand<CScopeView>(context, QStringLiteral("&Record/Play"), QStringLiteral("Scope"),
                                           QStringLiteral("Starts the scope again after it has stopped"), 10,
                                           [](CScopeView& v) { CScopeChildFrame::open(areaOf(v)); }));
}
