// The main frame's "Record/Play" command under Options: it toggles the
// record and play options window (view/recordplay/CFrameRecordPlay.h).
// It needs no document, so it stands beside the view commands of the menu.
#pragma once

class QMainWindow;
class QMdiArea;

// Adds the command at the top of the frame's "&Options" menu (made before
// "&Window" when the frame has none yet).
void addRecordPlayWindowCommand(QMainWindow* frame, QMdiArea* area);
