// The main frame's "Record/Play" and "Scope" commands under Options: the
// first toggles the record and play options window
// (view/recordplay/CFrameRecordPlay.h), the second opens the live scope of
// the external unit (view/scope/CScopeChildFrame.h). They need no document,
// so they stand beside the view commands of the menu.
#pragma once

class QAction;
class QString;
class QMainWindow;
class QMdiArea;

// Adds both commands at the top of the frame's "&Options" menu (made before
// "&Window" when the frame has none yet).
void addRecordPlayWindowCommand(QMainWindow* frame, QMdiArea* area);
// The command of a main frame by its text, "Record/Play" or "Scope" (for a
// toolbar); null when the frame has none.
QAction* recordPlayAreaCommand(const QMainWindow* frame, const QString& text);
