#include "EditCommands.h"

#include <filesystem>
#include <set>

#include "AppServices.h"
#include "CKestruneView.h"
#include "DocumentWindows.h"
#include "ViewCommands.h"
#include "document/CKestruneDoc.h"
#include "document/EditClipboard.h"
#include "document/UserException.h"

using sonmetra::UserException;

namespace {

std::set<std::string>& claimedPaths() {
    static std::set<std::string> paths;
    return paths;
}

std::string tempFolder() {
    std::string folder = AppServices::instance().tempFolder;
    if (folder.empty()) folder = std::filesystem::temp_directory_path().string();
    if (folder.back() != '/') folder += '/';
    return folder;
}

bool hasData(const CKestruneView& v) { return v.document() && v.document()->holdsData(); }
bool hasSelection(const CKestruneView& v) { return hasData(v) && v.selectionPresent(); }

}  // namespace

sonmetra::EditClipboard& editClipboard() {
    static sonmetra::EditClipboard own;
    AppServices& services = AppServices::instance();
    if (!services.clipboard) services.clipboard = &own;
    return *services.clipboard;
}

EditController::EditController(CKestruneView& view) : m_view(view) {}

EditController::~EditController() { releasePath(); }

void EditController::viewClosing() { releasePath(); }

void EditController::releasePath() {
    if (!m_claimedPath.empty()) claimedPaths().erase(m_claimedPath);
    m_claimedPath.clear();
}

sonmetra::UndoTempFile& EditController::undo() {
    if (m_claimedPath.empty()) {
        const std::string folder = tempFolder();
        const std::string title = m_view.document()->title();
        std::string path = sonmetra::UndoTempFile::pathFor(folder, title);
        for (int n = 2; claimedPaths().count(path) != 0; ++n)
            path = sonmetra::UndoTempFile::pathFor(folder, title + "(" + std::to_string(n) + ")");
        claimedPaths().insert(path);
        m_claimedPath = path;
        m_undo.setPath(path);
    }
    return m_undo;
}

// After an edit that changed the samples: the range follows the scroll bar,
// the summaries are rebuilt, the readouts and the label list follow.
void EditController::afterEdit() {
    m_view.setSelectionPresent(false);
    m_view.setCursorPlaced(false);
    m_view.rangeFromScrollBar();
    m_view.channelsEdited();
    m_view.refreshReadouts();
    labelsChanged(m_view.document());
}

void EditController::cut() {
    try {
        sonmetra::cutSelection(*m_view.document(), editClipboard(), undo());
    } catch (const UserException&) {
        return;  // the document is as it was
    }
    afterEdit();
    documentReplaced(m_view.document());
}

void EditController::copy() {
    try {
        editClipboard().copyFrom(*m_view.document());
    } catch (const UserException&) {
    }
}

void EditController::paste() {
    sonmetra::CKestruneDoc& doc = *m_view.document();
    sonmetra::PasteOutcome outcome;
    try {
        outcome = sonmetra::pasteClipboard(doc, editClipboard(), undo(), m_view.selectionPresent());
    } catch (const UserException&) {
        return;
    }
    m_view.setSelectionPresent(false);
    m_view.setCursorPlaced(false);
    if (outcome == sonmetra::PasteOutcome::FilledEmptyDocument) {
        // New strips: lay them out and take the range from the channels.
        m_view.channelsEdited();
        m_view.scrollBarFromRange();
    } else {
        m_view.rangeFromScrollBar();
        m_view.channelsEdited();
    }
    m_view.refreshReadouts();
    documentReplaced(&doc);
}

void EditController::clearToReference() {
    try {
        sonmetra::clearToReference(*m_view.document(), undo());
    } catch (const UserException&) {
        return;
    }
    m_view.channelsEdited();
    m_view.refreshReadouts();
    documentReplaced(m_view.document());
}

void EditController::undoLastEdit() {
    sonmetra::CKestruneDoc& doc = *m_view.document();
    if (!undo().restore(doc)) return;
    m_view.setSelectionPresent(doc.selectionFlag());
    m_view.setCursorPlaced(false);
    m_view.channelsEdited();
    m_view.scrollBarFromRange();
    m_view.refreshReadouts();
    documentReplaced(&doc);
}

void registerEditCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    (void)editClipboard();

    registerViewExtension([](CKestruneView& view) { return std::make_unique<EditController>(view); });

    auto& r = ViewCommandRegistry::instance();
    auto controller = [](const CKestruneView& v) { return v.extension<EditController>(); };
    auto add = [&r](const QString& text, const QString& tip, int order, bool separator,
                    std::function<void(EditController&)> run, std::function<bool(const CKestruneView&)> enabled) {
        ViewCommand c;
        c.menu = "&Edit";
        c.text = text;
        c.statusTip = tip;
        c.order = order;
        c.separatorBefore = separator;
        c.run = [run](CKestruneView& v) {
            if (auto* e = v.extension<EditController>()) run(*e);
        };
        c.enabled = std::move(enabled);
        r.add(std::move(c));
    };

    add(
        "&Undo\tCtrl+Z", "Undoes the last edit", 10, false, [](EditController& e) { e.undoLastEdit(); },
        [controller](const CKestruneView& v) {
            const auto* e = controller(v);
            return hasData(v) && e && e->undoAvailable();
        });
    add(
        "Cu&t\tCtrl+X", "Cuts the selection of every channel", 20, true, [](EditController& e) { e.cut(); },
        hasSelection);
    add(
        "&Copy\tCtrl+C", "Copies the selection of every channel", 30, false, [](EditController& e) { e.copy(); },
        hasSelection);
    add(
        "&Paste\tCtrl+V", "Inserts the copied channels at the cursor or over the selection", 40, false,
        [](EditController& e) { e.paste(); }, [](const CKestruneView&) { return editClipboard().valid(); });
    add(
        "Clear to Reference", "Sets the selected samples to the channel's reference level", 50, true,
        [](EditController& e) { e.clearToReference(); }, hasSelection);
}
