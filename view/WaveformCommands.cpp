#include "WaveformCommands.h"

#include "CKestruneView.h"
#include "ViewCommands.h"
#include "document/CKestruneDoc.h"

namespace {

bool hasData(const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); }

ViewCommand command(const QString& menu, const QString& text, int order, std::function<void(CKestruneView&)> run,
                    std::function<bool(const CKestruneView&)> enabled, bool separatorBefore = false) {
    ViewCommand c;
    c.menu = menu;
    c.text = text;
    c.order = order;
    c.separatorBefore = separatorBefore;
    c.run = std::move(run);
    c.enabled = std::move(enabled);
    return c;
}

}  // namespace

QString clickedChannelMenuText(const CKestruneView& view) {
    const int i = view.clickedChannel();
    if (i < 0 || view.document() == nullptr || i >= view.document()->channelCount()) {
        return QStringLiteral("No channel is clicked");
    }
    return QStringLiteral("Set Reference only for: ") + QString::fromStdString(view.document()->channel(i).m_name);
}

void registerWaveformViewCommands() {
    auto& registry = ViewCommandRegistry::instance();
    const QString view = QStringLiteral("&View");
    const QString edit = QStringLiteral("&Edit");

    // The six zoom commands run one routine with their mode number. Home
    // and UnZoom take keys that no other command and no key of the view
    // (Home, End, Backspace alone) uses.
    registry.add(command(
        view, "In\tCtrl+B", 10, [](CKestruneView& v) { v.zoom(1); }, hasData));
    registry.add(command(
        view, "Out\tCtrl+E", 11, [](CKestruneView& v) { v.zoom(2); },
        [](const CKestruneView& v) { return hasData(v) && v.scrollable(); }));
    registry.add(command(
        view, "Home\tCtrl+0", 12, [](CKestruneView& v) { v.zoom(5); }, hasData));
    registry.add(command(
        view, "Selection\tCtrl+Q", 13, [](CKestruneView& v) { v.zoom(3); },
        [](const CKestruneView& v) { return hasData(v) && v.selectionPresent(); }));
    registry.add(command(
        view, "UnZoom\tCtrl+Backspace", 14, [](CKestruneView& v) { v.zoom(0); }, hasData));
    registry.add(command(
        view, "From Cursor for Duration\tCtrl+W", 15, [](CKestruneView& v) { v.zoom(4); },
        [](const CKestruneView& v) { return hasData(v) && v.cursorPlaced(); }));

    registry.add(command(
        edit, "Select Window", 500, [](CKestruneView& v) { v.selectWindow(); }, hasData, true));
    registry.add(command(
        edit, "Select All\tCtrl+A", 501, [](CKestruneView& v) { v.selectAll(); }, hasData));
    registry.add(command(
        edit, "Set Reference All", 510, [](CKestruneView& v) { v.setReferenceAll(); },
        [](const CKestruneView& v) { return hasData(v) && v.cursorPlaced(); }, true));
    ViewCommand clicked = command(
        edit, "Set Reference for Clicked Channel", 511, [](CKestruneView& v) { v.setReferenceForClicked(); },
        [](const CKestruneView& v) { return hasData(v) && v.clickedChannel() >= 0; });
    clicked.dynamicText = clickedChannelMenuText;
    registry.add(std::move(clicked));
    registry.add(command(
        edit, "Set Reference All to Zero", 512, [](CKestruneView& v) { v.setReferenceAllToZero(); }, hasData));
}
