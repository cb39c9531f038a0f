// The pitch window's commands: "Pitch\tCtrl+L" in the waveform view's
// Analysis menu, and the menus of the window itself (command context
// "pitch"): View (zoom, Save As bmp..., Export Track..., Print...,
// Print Preview), Log (the three pitch entries) and Play. Also registers
// `sonmetra --render pitch`. The "Pitch..." option dialog registers itself
// from the frame layer.
#pragma once

#include <QString>

class CPitchView;

inline const QString kPitchContext = QStringLiteral("pitch");
inline const QString kPitchCommandText = QStringLiteral("Pitch\tCtrl+L");

void registerPitchWindow();

// The window's commands, also run by tests.
void savePitchBitmap(CPitchView& view);
void exportPitchTrackCommand(CPitchView& view);
void printPitchView(CPitchView& view);
void printPreviewPitchView(CPitchView& view);
// Sends rows to the open log: false when none is open or there is nothing to enter.
bool enterPitchAtMarker(CPitchView& view);
bool enterPitchSelection(CPitchView& view);
bool enterPitchAll(CPitchView& view);
