#include "FrameViewCommands.h"

#include "DisplayOptionDialog.h"
#include "ViewPrinting.h"
#include "WaveformRenderKind.h"
#include "ZoomOptionDialog.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"
#include "view/ViewCommands.h"

namespace {

bool hasData(const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); }

void add(const QString& menu, const QString& text, int order, std::function<void(CKestruneView&)> run,
         bool separatorBefore = false) {
    ViewCommand c;
    c.menu = menu;
    c.text = text;
    c.order = order;
    c.separatorBefore = separatorBefore;
    c.run = std::move(run);
    c.enabled = hasData;
    ViewCommandRegistry::instance().add(std::move(c));
}

}  // namespace

void registerFrameViewCommands() {
    const QString view = QStringLiteral("&View");
    const QString options = QStringLiteral("&Options");
    add(view, "Save As bmp...", 100, saveViewAsBitmapCommand, true);
    add(view, "Save Screen As bmp...", 101, saveScreenAsBitmapCommand);
    add(view, "Print...", 110, printViewCommand, true);
    add(view, "Print Preview", 111, printPreviewCommand);
    add(options, "Zoom...", 300, runZoomOptions);
    add(options, "Display", 310, runDisplayOptions);
    registerWaveformRenderKind();
}
