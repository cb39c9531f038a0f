// The scope's commands: the menus shown while the scope is the active
// window (its picture as a bitmap and on paper, and the Record/Play options
// beside it), and the options toggle that places a new options window
// beside the scope.
#pragma once

class QMdiArea;

// Registers the scope's window commands (once, before the main frame is made).
void registerScopeCommands();
// "Record/Play": toggles the options window (view/recordplay/CFrameRecordPlay.h);
// the first time it is made while the scope is open it goes beside the scope.
void toggleRecordPlayBesideScope(QMdiArea* area);
