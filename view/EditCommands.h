// The "&Edit" menu of the waveform view: Undo, Cut, Copy, Paste and Clear
// to Reference over every channel of the document (document/EditOperations.h),
// and the view's side of them: its undo temp file, the display range taken
// again from the scroll bar after each edit, the rebuilt summaries, and the
// pitch window and label list told after Undo and Paste.
#pragma once

#include <string>

#include "ViewExtension.h"
#include "document/EditOperations.h"

namespace sonmetra {
class EditClipboard;
}

// Per view: the undo temp file. Its path is the temp folder, the document's
// title and "@@tmp", formed when the view first needs it; a second view
// with the same title gets a numbered name, so that views never share one.
class EditController : public IViewExtension {
public:
    explicit EditController(CKestruneView& view);
    ~EditController() override;

    sonmetra::UndoTempFile& undo();
    bool undoAvailable() const { return m_undo.available(); }

    void cut();
    void copy();
    void paste();
    void clearToReference();
    void undoLastEdit();

    void viewClosing() override;

private:
    void afterEdit();
    void releasePath();

    CKestruneView& m_view;
    sonmetra::UndoTempFile m_undo;
    std::string m_claimedPath;
};

// The program-wide clipboard (the application's, or one made here when the
// application has not set one).
sonmetra::EditClipboard& editClipboard();

// Registers the extension and the "&Edit" commands.
void registerEditCommands();
