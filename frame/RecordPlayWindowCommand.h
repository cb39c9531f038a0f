// The main frame's "Record/Play" and "Scope" commands: the first toggles the
// record and play options window (view/recordplay/CFrameRecordPlay.h), the
// second opens the live scope of the external unit
// (view/scope/CScopeChildFrame.h). They need no document, so they stand
// beside the view commands of the menus, and on a toolbar of their own.
#pragma once

class CommandMenus;
class QAction;
class QString;
class QMainWindow;
class QMdiArea;

// "Record/Play" at the top of the waveform view's "&Options" menu, "Scope"
// at the end of its "&Record/Play" menu (each made before "&Window" when
// the view has none), and both on the "Record/Play" toolbar.
void addRecordPlayWindowCommand(QMainWindow* frame, QMdiArea* area, const CommandMenus& menus);
// The command of a main frame by its text, "Record/Play" or "Scope"; null
// when the frame has none.
QAction* recordPlayAreaCommand(const QMainWindow* frame, const QString& text);
